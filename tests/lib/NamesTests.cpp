#include "lib/KZFileManager/Names.h"

#include <algorithm>
#include <chrono>

#include "tests/lib/FilesFixture.h"

using KZFileManager::decodeWildcardPath;
using KZFileManager::filesMatchingWildcardPath;
using KZFileManager::isLike;
using KZFileManager::uniqueFilename;
using KZFileManager::validateFilename;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

namespace {

class Wildcards : public FilesFixture {};
class FreeNames : public FilesFixture {};

TEST(WildcardGrammar, TakesAStarForAnyRunOfCharacters) {
    EXPECT_TRUE(isLike("Plug.bundle", "*.bundle"));
    EXPECT_TRUE(isLike(".bundle", "*.bundle"));
    EXPECT_TRUE(isLike("abc", "a*c"));
    EXPECT_TRUE(isLike("abcbc", "a*bc"));
    EXPECT_TRUE(isLike("", "**"));
    EXPECT_FALSE(isLike("Plug.bundles", "*.bundle"));
    EXPECT_FALSE(isLike("abd", "a*c"));
}

TEST(WildcardGrammar, TakesAQuestionMarkForOneCharacterOfAnyScript) {
    EXPECT_TRUE(isLike("a", "?"));
    EXPECT_TRUE(isLike("é", "?"));
    EXPECT_TRUE(isLike("x🎹y", "x?y"));
    EXPECT_TRUE(isLike("日本", "??"));
    EXPECT_FALSE(isLike("日本", "?"));
    EXPECT_FALSE(isLike("", "?"));
}

TEST(WildcardGrammar, CountsACombiningMarkAsACharacterOfItsOwn) {
    EXPECT_TRUE(isLike("e\u0301", "??"));
    EXPECT_FALSE(isLike("e\u0301", "?"));
}

TEST(WildcardGrammar, CountsBytesThatAreNoTextOneByOne) {
    EXPECT_TRUE(isLike("\xff\xfe", "??"));
    EXPECT_TRUE(isLike("\xe6\x97", "??"));  // a character cut short
    EXPECT_TRUE(isLike("\xc0\xaf", "??"));  // an overlong form
    EXPECT_TRUE(isLike("\xff.txt", "*.txt"));
}

TEST(WildcardGrammar, LetsAStarFindACharacterBehindIt) { EXPECT_TRUE(isLike("日本語x", "*?x")); }

TEST(WildcardGrammar, TellsUpperFromLowerCase) { EXPECT_FALSE(isLike("PLUG.BUNDLE", "*.bundle")); }

TEST(WildcardGrammar, TakesTheCharacterBehindABackslashForItself) {
    EXPECT_TRUE(isLike("a*b", "a\\*b"));
    EXPECT_FALSE(isLike("axb", "a\\*b"));
    EXPECT_TRUE(isLike("a?", "*\\?"));
    EXPECT_FALSE(isLike("ab", "*\\?"));
    EXPECT_TRUE(isLike("a\\b", "a\\\\b"));
    EXPECT_TRUE(isLike("a\\", "a\\"));  // nothing behind it
}

TEST(WildcardGrammar, TakesBracketsAndBracesForThemselves) {
    EXPECT_TRUE(isLike("[ab]", "[ab]"));
    EXPECT_FALSE(isLike("a", "[ab]"));
    EXPECT_FALSE(isLike("a", "{a,b}"));
}

TEST(WildcardGrammar, AnswersAtOnceForPatternsOfManyStars) {
    const std::string name(255, 'a');
    std::string pattern;
    for (int star = 0; star < 100; ++star) {
        pattern += "*a";
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(isLike(name, pattern + "*b"));
    EXPECT_TRUE(isLike(name, pattern + "*"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds{200});
}

TEST_F(Wildcards, GiveAPatternWithoutAStarBackWhetherOrNotItExists) {
    EXPECT_THAT(filesMatchingWildcardPath("/nowhere/at?all"), ElementsAre("/nowhere/at?all"));
    EXPECT_THAT(filesMatchingWildcardPath("Plug-Ins/none", disk.path()), ElementsAre(disk / "Plug-Ins/none"));
    EXPECT_THAT(filesMatchingWildcardPath("/Plug-Ins/none", disk.path()), ElementsAre(disk / "Plug-Ins/none"));
}

TEST_F(Wildcards, FindEveryMatchingEntryOfAFolderHiddenOnesIncluded) {
    add("Plug-Ins/A.bundle");
    add("Plug-Ins/B.bundle/");
    add("Plug-Ins/.hidden.bundle");
    add("Plug-Ins/C.component");
    EXPECT_THAT(
        filesMatchingWildcardPath("Plug-Ins/*.bundle", disk.path()),
        UnorderedElementsAre(disk / "Plug-Ins/A.bundle", disk / "Plug-Ins/B.bundle", disk / "Plug-Ins/.hidden.bundle"));
}

TEST_F(Wildcards, KeepTheOrderInWhichTheHostListsTheEntries) {
    for (int number = 0; number < 50; ++number) {
        add("many/file " + std::to_string(number));
    }
    std::vector<std::string> listed;
    for (const auto& entry : listing(disk / "many")) {
        listed.push_back(disk / ("many/" + entry.name));
    }
    EXPECT_EQ(filesMatchingWildcardPath("many/*", disk.path()), listed);
}

TEST_F(Wildcards, AreReadRelativeToTheBaseEvenWhenAbsolute) {
    add("a/x.txt");
    EXPECT_THAT(filesMatchingWildcardPath("/a/*.txt", disk.path()), ElementsAre(disk / "a/x.txt"));
}

TEST_F(Wildcards, CountFromTheRootWithoutABase) {
    add("a/x.txt");
    const std::vector<std::string> expected{disk / "a/x.txt"};
    EXPECT_EQ(filesMatchingWildcardPath((disk / "a/*.txt")), expected);
    EXPECT_EQ(filesMatchingWildcardPath((disk / "a/*.txt").substr(1), std::nullopt), expected);
}

TEST_F(Wildcards, GoOnBelowEveryFolderThatMatched) {
    add("one/Contents/Info.plist");
    add("two/Contents/Info.plist");
    add("three/Contents/other");
    add("file");
    EXPECT_THAT(filesMatchingWildcardPath("*/Contents/Info.plist", disk.path()),
                UnorderedElementsAre(disk / "one/Contents/Info.plist", disk / "two/Contents/Info.plist"));
    EXPECT_THAT(filesMatchingWildcardPath("t*/*/*", disk.path()),
                UnorderedElementsAre(disk / "two/Contents/Info.plist", disk / "three/Contents/other"));
}

TEST_F(Wildcards, TakeAComponentWithoutAStarLiterally) {
    add("a/x?.txt");
    add("a/xy.txt");
    EXPECT_THAT(filesMatchingWildcardPath("*a/x?.txt", disk.path()), ElementsAre(disk / "a/x?.txt"));
}

TEST_F(Wildcards, FindNothingInAFileOrAMissingFolder) {
    add("file");
    EXPECT_THAT(filesMatchingWildcardPath("file/*", disk.path()), IsEmpty());
    EXPECT_THAT(filesMatchingWildcardPath("gone/*", disk.path()), IsEmpty());
}

TEST_F(Wildcards, LeaveOutALinkThatLeadsNowhere) {
    add("folder/there");
    addLink("folder/dangling", "nowhere");
    addLink("folder/link", "there");
    EXPECT_THAT(filesMatchingWildcardPath("folder/*", disk.path()),
                UnorderedElementsAre(disk / "folder/there", disk / "folder/link"));
}

TEST_F(Wildcards, FollowALinkToAFolder) {
    add("folder/x");
    addLink("link", "folder");
    EXPECT_THAT(filesMatchingWildcardPath("li*/x*", disk.path()), ElementsAre(disk / "link/x"));
}

TEST_F(Wildcards, FindNamesThatAreNoText) {
    add("folder/\xff\n name");
    EXPECT_THAT(filesMatchingWildcardPath("folder/*name", disk.path()), ElementsAre(disk / "folder/\xff\n name"));
}

TEST_F(Wildcards, GoNoDeeperThanThePatternWhateverTheSwitch) {
    add("a/deep/x.txt");
    EXPECT_THAT(filesMatchingWildcardPath("a/*.txt", disk.path(), SearchSubdirs::yes), IsEmpty());
}

TEST_F(Wildcards, LeadBackToTheBaseWithASlashAtTheEnd) {
    add("folder/x");
    EXPECT_THAT(filesMatchingWildcardPath("fold*/", disk.path()), ElementsAre(disk.path()));
}

TEST_F(Wildcards, AskTheDiskOnlyAboutLinksAndWhatTheListingLeavesOpen) {
    for (const char* name : {"one", "two", "three"}) {
        add(std::string("folder/") + name);
    }
    addLink("folder/link", "one");
    files.forgetCalls();
    filesMatchingWildcardPath("folder/*", disk.path());
    EXPECT_EQ(std::ranges::count(files.calls(), Operation::fileExists, &Call::operation), 2);  // the folder, the link
}

TEST_F(Wildcards, DecodeToTheFirstMatch) {
    add("a/x.txt");
    EXPECT_EQ(decodeWildcardPath("a/*.txt", disk.path()), disk / "a/x.txt");
}

TEST_F(Wildcards, DecodeToThePatternBelowTheBaseWhenNothingMatches) {
    EXPECT_EQ(decodeWildcardPath("a/*.txt", disk.path()), disk / "a/*.txt");
    EXPECT_EQ(decodeWildcardPath("a/b", disk.path()), disk / "a/b");
}

TEST(CleanNames, LoseOneDotAtTheStart) {
    EXPECT_EQ(validateFilename(".hidden"), "hidden");
    EXPECT_EQ(validateFilename("..hidden"), ".hidden");
    EXPECT_EQ(validateFilename("."), "");
    EXPECT_EQ(validateFilename(".."), ".");
    EXPECT_EQ(validateFilename("..."), "..");
}

TEST(CleanNames, KeepADotBehindABlank) { EXPECT_EQ(validateFilename(" .My:File/ "), ".MyFile"); }

TEST(CleanNames, LoseWhiteSpaceAtBothEndsOnly) {
    EXPECT_EQ(validateFilename("\t My  File \r\n"), "My  File");
    EXPECT_EQ(validateFilename("\u00a0x\u3000"), "x");
    EXPECT_EQ(validateFilename(". x"), "x");
}

TEST(CleanNames, LoseEverySlashAndColon) {
    EXPECT_EQ(validateFilename("a/b:c//d"), "abcd");
    EXPECT_EQ(validateFilename("/:"), "");
}

TEST(CleanNames, KeepEverythingElseAndAnyLength) {
    EXPECT_EQ(validateFilename("*?\\\"<>|\n🎹x"), "*?\\\"<>|\n🎹x");
    EXPECT_EQ(validateFilename(std::string(5000, 'n')).size(), 5000U);
    EXPECT_EQ(validateFilename(""), "");
}

TEST_F(FreeNames, AreThePathItselfWhenNothingIsThere) {
    EXPECT_EQ(uniqueFilename(disk / "Report.pdf"), disk / "Report.pdf");
}

TEST_F(FreeNames, CountUpFromTwoBeforeTheExtension) {
    add("Report.pdf");
    EXPECT_EQ(uniqueFilename(disk / "Report.pdf"), disk / "Report 2.pdf");
    add("Report 2.pdf");
    add("Report 3.pdf");
    EXPECT_EQ(uniqueFilename(disk / "Report.pdf"), disk / "Report 4.pdf");
}

TEST_F(FreeNames, FillTheFirstGap) {
    add("Report.pdf");
    add("Report 3.pdf");
    EXPECT_EQ(uniqueFilename(disk / "Report.pdf"), disk / "Report 2.pdf");
}

TEST_F(FreeNames, OfANameWithoutExtensionEndInTheNumber) {
    add("Notes");
    add(".hidden");
    add("folder.d/plain");
    EXPECT_EQ(uniqueFilename(disk / "Notes"), disk / "Notes 2");
    EXPECT_EQ(uniqueFilename(disk / ".hidden"), disk / ".hidden 2");
    EXPECT_EQ(uniqueFilename(disk / "folder.d/plain"), disk / "folder.d/plain 2");
}

TEST_F(FreeNames, TakeADanglingLinkForFree) {
    addLink("Notes", "nowhere");
    EXPECT_EQ(uniqueFilename(disk / "Notes"), disk / "Notes");
}

}  // namespace
