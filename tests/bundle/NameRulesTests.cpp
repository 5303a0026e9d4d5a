#include "tests/bundle/CheckFixture.h"
#include "tools/wickfield-bundle/check/NameFolding.h"

namespace wickfield_bundle {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class NameRules : public CheckFixture {};

constexpr const char* composed = "Caf\xC3\xA9";
constexpr const char* decomposed = "Cafe\xCC\x81";

TEST_F(NameRules, FindNothingWrongWithNamesOfAnyLanguage) {
    for (const char* const name :
         {"Café Ænigma", "🌲 Waldlichtung", "Тёмный зал", "静かな部屋", "Ümläut & 'Quotes'", "a\\b"}) {
        write(inTree("Library/") + name);
    }
    EXPECT_THAT(found(checkNames), IsEmpty());
}

TEST_F(NameRules, FindNamesThatDifferInCaseAlone) {
    write(inTree("Library/Reverb/HALL"));
    write(inTree("Library/Reverb/Hall"));
    write(inTree("Library/Reverb/Hall 2"));
    write(inTree("Library/reverb 2/hall"));
    EXPECT_THAT(found(checkNames), ElementsAre(Found{"name-collision-case", inTree("Library/Reverb/Hall")}));
    EXPECT_THAT(reason(checkNames), HasSubstr("\"HALL\""));
}

TEST_F(NameRules, FindFoldersThatDifferInCaseAlone) {
    write(inTree("Library/Presets/a"));
    write(inTree("Library/presets/b"));
    EXPECT_THAT(found(checkNames), ElementsAre(Found{"name-collision-case", inTree("Library/presets")}));
}

TEST_F(NameRules, KnowTheCaseOfOtherAlphabets) {
    write(inTree("Library/ЗАЛ"));
    write(inTree("Library/Зал"));
    write(inTree("Library/STRASSE"));
    write(inTree("Library/straße"));
    EXPECT_THAT(found(checkNames), UnorderedElementsAre(Found{"name-collision-case", inTree("Library/Зал")},
                                                        Found{"name-collision-case", inTree("Library/straße")}));
}

TEST_F(NameRules, FindNamesThatDifferInTheFormOfTheirAccents) {
    write(inTree(std::string("Library/") + composed));
    write(inTree(std::string("Library/") + decomposed));
    EXPECT_THAT(found(checkNames),
                ElementsAre(Found{"name-collision-form", inTree(std::string("Library/") + composed)}));
}

TEST_F(NameRules, FindCollisionsAmongTheInstallersOwnParts) {
    write("Contents/Resources/Agreement.rtf");
    write("Contents/Resources/agreement.rtf");
    EXPECT_THAT(found(checkNames), ElementsAre(Found{"name-collision-case", "Contents/Resources/agreement.rtf"}));
}

TEST_F(NameRules, FindOneCollisionLessThanThereAreNames) {
    for (const char* const name : {"aa", "aA", "Aa", "AA"}) {
        write(inTree("Library/") + name);
    }
    EXPECT_EQ(found(checkNames).size(), 3U);
}

TEST_F(NameRules, FindNamesThatAreNotUTF8) {
    write(inTree("Library/latin\xE9"));
    write(inTree("Library/cut\xC3"));
    EXPECT_THAT(found(checkNames), UnorderedElementsAre(Found{"name-not-utf8", inTree("Library/latin\xE9")},
                                                        Found{"name-not-utf8", inTree("Library/cut\xC3")}));
}

TEST_F(NameRules, FindControlCharacters) {
    write(inTree("Library/line\nbreak"));
    write(inTree("Library/\x1b[2Jclear"));
    write(inTree("Library/next\xC2\x85line"));
    write(inTree("Library/Icon\r"));  // the file with a folder's own icon is called so
    EXPECT_THAT(found(checkNames), UnorderedElementsAre(Found{"name-control", inTree("Library/line\nbreak")},
                                                        Found{"name-control", inTree("Library/\x1b[2Jclear")},
                                                        Found{"name-control", inTree("Library/next\xC2\x85line")}));
}

TEST_F(NameRules, FindColonsAndBlanksAtTheEnds) {
    write(inTree("Library/a:b"));
    write(inTree("Library/ first"));
    write(inTree("Library/last "));
    write(inTree("Library/dot."));
    EXPECT_THAT(found(checkNames), UnorderedElementsAre(Found{"name-colon", inTree("Library/a:b")},
                                                        Found{"name-blank-end", inTree("Library/ first")},
                                                        Found{"name-blank-end", inTree("Library/last ")},
                                                        Found{"name-blank-end", inTree("Library/dot.")}));
}

TEST_F(NameRules, FindANameThatIsTooLongOnceItsAccentsCount) {
    std::string syllables;  // of three bytes each, which fall into three characters of their own
    for (int count = 0; count < 85; ++count) {
        syllables += "\xEA\xB0\x81";
    }
    std::string accents;  // of two bytes each, two characters
    for (int count = 0; count < 127; ++count) {
        accents += "\xC3\xB6";
    }
    write(inTree("Library/") + syllables);
    write(inTree("Library/") + accents + "x");
    const auto all = found(checkNames);
    EXPECT_THAT(all, IsEmpty());  // 255 each

    std::string marks;  // of two bytes, but three characters
    for (int count = 0; count < 127; ++count) {
        marks += "\xC7\x97";
    }
    write(inTree("Library/") + marks);
    EXPECT_THAT(found(checkNames), ElementsAre(Found{"name-too-long", inTree("Library/") + marks}));
}

TEST_F(NameRules, FindTheOutermostFolderWhosePathIsTooLong) {
    const std::string long200(200, 'x');
    std::string folder = "Library";
    for (int count = 0; count < 6; ++count) {
        folder += "/" + long200;
    }
    write(inTree(folder + "/file"));
    const auto all = found(checkNames);
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all.front().rule, "path-too-long");
    EXPECT_EQ(all.front().place,
              inTree("Library/" + long200 + "/" + long200 + "/" + long200 + "/" + long200 + "/" + long200));
}

TEST_F(NameRules, FindNothingWrongWithAPathOfUsualLength) {
    const std::string long200(200, 'x');
    write(inTree("Library/" + long200 + "/" + long200 + "/" + long200 + "/" + long200));
    EXPECT_THAT(found(checkNames), IsEmpty());
}

TEST(FoldedNames, AreEqualWhereFileSystemsTakeTwoForOne) {
    EXPECT_EQ(foldedName("Hall"), foldedName("HALL"));
    EXPECT_EQ(foldedName(composed), foldedName(decomposed));
    EXPECT_EQ(foldedName("ÉCOLE"), foldedName("e\xCC\x81"
                                              "cole"));
    EXPECT_NE(foldedName("Hall"), foldedName("Hell"));
    EXPECT_NE(foldedName("Cafe"), foldedName(composed));
    EXPECT_EQ(foldedName("a\xFF"), "a\xFF");
}

}  // namespace
}  // namespace wickfield_bundle
