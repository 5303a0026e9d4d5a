// Unpacking, sound archives and hostile ones.
#include <sys/sysmacros.h>
#include <sys/xattr.h>

#include "platform/linux/tools/archive/ToolFailure.h"
#include "platform/linux/tools/archive/TreeExtractor.h"
#include "tests/tools/ToolsFixture.h"
#include "tests/tools/ZipMaker.h"

using platform::linux_host::extractArchive;
using platform::linux_host::ExtractionLimits;
using platform::linux_host::ToolFailure;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

class Extracting : public ToolsFixture {
protected:
    // Empty when it went well.
    std::string extract(const std::string& bytes, const ExtractionLimits& limits = {}) {
        write("a.zip", bytes);
        try {
            extractArchive(place / "a.zip", place / "out", limits);
        } catch (const ToolFailure& failure) {
            return failure.what();
        }
        return {};
    }
    std::string extract(const ZipMaker& zip, const ExtractionLimits& limits = {}) {
        return extract(zip.bytes(), limits);
    }
    // Says so, and leaves nothing but the archive.
    void expectRefused(const ZipMaker& zip, const std::string& reason, const ExtractionLimits& limits = {}) {
        EXPECT_THAT(extract(zip, limits), HasSubstr(reason));
        EXPECT_THAT(tree(), ElementsAre("a.zip"));
    }
};

TEST_F(Extracting, BringsFilesFoldersAndLinks) {
    ASSERT_EQ(extract(ZipMaker().folder("f/").file("f/file", "text").link("f/link", "file").folder("f/empty/")), "");
    EXPECT_THAT(tree("out"), ElementsAre("f", "f/empty", "f/file", "f/link"));
    EXPECT_EQ(read("out/f/file"), "text");
    EXPECT_EQ(targetOf("out/f/link"), "file");
}

TEST_F(Extracting, UnpacksDeflatedFiles) {
    const std::string text(300'000, 'x');
    ASSERT_EQ(extract(ZipMaker().add({.name = "a", .contents = text, .method = 8, .packed = deflated(text)})), "");
    EXPECT_EQ(read("out/a"), text);
}

TEST_F(Extracting, MakesAnEmptyFolderOfAnEmptyArchive) {
    ASSERT_EQ(extract(ZipMaker()), "");
    EXPECT_THAT(tree("out"), IsEmpty());
}

TEST_F(Extracting, MakesTheFoldersAboveTheDestination) {
    write("a.zip", ZipMaker().file("a").bytes());
    extractArchive(place / "a.zip", place / "new/folders/out/");
    EXPECT_EQ(read("new/folders/out/a"), "contents");
}

TEST_F(Extracting, MakesFoldersThatHaveNoEntryOfTheirOwn) {
    ASSERT_EQ(extract(ZipMaker().file("x/y/z")), "");
    EXPECT_EQ(read("out/x/y/z"), "contents");
}

TEST_F(Extracting, KeepsPermissionsButNoSetIdOrStickyBits) {
    ASSERT_EQ(extract(ZipMaker().add({.name = "file", .mode = S_IFREG | 07751}).folder("folder/", S_IFDIR | 07710)),
              "");
    EXPECT_EQ(modeOf("out/file"), 0751U);
    EXPECT_EQ(modeOf("out/folder"), 0710U);
}

TEST_F(Extracting, GivesUsualPermissionsToWhatHasNone) {
    const mode_t before = ::umask(027);
    ASSERT_EQ(extract(ZipMaker()
                          .add({.name = "dos", .mode = 0, .host = 0})
                          .add({.name = "none", .mode = 0})
                          .add({.name = "x/", .contents = "", .mode = 0})),
              "");
    ::umask(before);
    EXPECT_EQ(modeOf("out/dos"), 0640U);
    EXPECT_EQ(modeOf("out/none"), 0640U);
    EXPECT_EQ(modeOf("out/x"), 0750U);
    EXPECT_EQ(modeOf("out"), 0750U);
}

TEST_F(Extracting, KeepsPermissionsWhereTheFolderHandsDownOthers) {
    std::string list("\2\0\0\0", 4);  // all for the owner, reading for the group, nothing for others
    for (const auto& [tag, permissions] : {std::pair{0x01, 7}, std::pair{0x04, 4}, std::pair{0x20, 0}}) {
        ZipMaker::put(list, static_cast<std::uint64_t>(tag), 2);
        ZipMaker::put(list, static_cast<std::uint64_t>(permissions), 2);
        ZipMaker::put(list, 0xffffffffU, 4);
    }
    if (::setxattr(place.path().c_str(), "system.posix_acl_default", list.data(), list.size(), 0) != 0) {
        GTEST_SKIP() << "no access lists here";
    }
    ASSERT_EQ(extract(ZipMaker().add({.name = "f/program", .mode = S_IFREG | 0755})), "");
    EXPECT_EQ(modeOf("out/f/program"), 0755U);
}

TEST_F(Extracting, FillsAFolderThatMayNotBeWritten) {
    ASSERT_EQ(extract(ZipMaker().folder("closed/", S_IFDIR | 0555).file("closed/file")), "");
    EXPECT_EQ(modeOf("out/closed"), 0555U);
    EXPECT_EQ(read("out/closed/file"), "contents");
    ::chmod((place / "out/closed").c_str(), 0755);
}

TEST_F(Extracting, KeepsTheDatesOfFilesLinksAndFolders) {
    const auto seconds = [](std::int32_t value) {
        std::string extra("UT\5\0\1", 5);
        ZipMaker::put(extra, static_cast<std::uint32_t>(value), 4);
        return extra;
    };
    ASSERT_EQ(extract(ZipMaker()
                          .add({.name = "f/", .contents = "", .mode = S_IFDIR | 0755, .extras = seconds(1'000'000'000)})
                          .add({.name = "f/old", .extras = seconds(-86'400)})
                          .add({.name = "f/link", .mode = S_IFLNK | 0777, .extras = seconds(5)})
                          .add({.name = "dos"})),
              "");
    EXPECT_EQ(look("out/f").st_mtime, 1'000'000'000);
    EXPECT_EQ(look("out/f/old").st_mtime, -86'400);
    EXPECT_EQ(look("out/f/link").st_mtime, 5);
    std::tm midnight{};
    midnight.tm_year = 126;
    midnight.tm_mon = 10;
    midnight.tm_mday = 21;
    midnight.tm_isdst = -1;
    EXPECT_EQ(look("out/dos").st_mtime, std::mktime(&midnight));
}

TEST_F(Extracting, TakesNamesAsTheBytesTheyAre) {
    const std::string composed = "\xC3\xA9";
    const std::string decomposed = "e\xCC\x81";
    const std::string latin = "\xE9";
    ASSERT_EQ(extract(ZipMaker()
                          .add({.name = composed, .contents = "1", .flags = 1U << 11U})
                          .add({.name = decomposed, .contents = "2", .flags = 1U << 11U})
                          .file(latin, "3")),
              "");
    EXPECT_EQ(read("out/" + composed), "1");
    EXPECT_EQ(read("out/" + decomposed), "2");
    EXPECT_EQ(read("out/" + latin), "3");
}

TEST_F(Extracting, PrefersANameInUnicodeThatTheArchiverHasAdded) {
    const std::string name = "\x82t\x82";
    std::string extra("up\x0a\0\1", 5);
    ZipMaker::put(extra, crcOf(name), 4);
    extra += "\xC3\xA9t\xC3\xA9";
    ASSERT_EQ(extract(ZipMaker().add({.name = name, .extras = extra})), "");
    EXPECT_THAT(tree("out"), ElementsAre("\xC3\xA9t\xC3\xA9"));
}

TEST_F(Extracting, IgnoresANameInUnicodeThatBelongsToAnotherName) {
    const std::string extra("up\x0a\0\1\0\0\0\0other", 14);
    ASSERT_EQ(extract(ZipMaker().add({.name = "name", .extras = extra})), "");
    EXPECT_THAT(tree("out"), ElementsAre("name"));
}

TEST_F(Extracting, LeavesOutTheAttributesOfAnotherSystem) {
    ASSERT_EQ(extract(ZipMaker().file("a").folder("__MACOSX/").file("__MACOSX/._a").file("sub/__MACOSX/x")), "");
    EXPECT_THAT(tree("out"), ElementsAre("a", "sub", "sub/__MACOSX", "sub/__MACOSX/x"));
}

TEST_F(Extracting, ReadsAnArchiveBehindAProgramThatUnpacksIt) {
    ASSERT_EQ(extract("#!/bin/sh\nexit\n" + ZipMaker().file("a").file("b").bytes()), "");
    EXPECT_EQ(read("out/b"), "contents");
}

TEST_F(Extracting, ReadsAnArchiveWithAComment) {
    std::string bytes = ZipMaker().file("a").bytes();
    bytes[bytes.size() - 2] = 5;
    ASSERT_EQ(extract(bytes + "hello"), "");
    EXPECT_EQ(read("out/a"), "contents");
}

TEST_F(Extracting, DropsDotsAndDoubleSlashesFromPaths) {
    ASSERT_EQ(extract(ZipMaker().folder("./").file("./a//b/./c")), "");
    EXPECT_THAT(tree("out"), ElementsAre("a", "a/b", "a/b/c"));
}

TEST_F(Extracting, LeavesNoHiddenFolderBehind) {
    ASSERT_EQ(extract(ZipMaker().file("a")), "");
    EXPECT_THAT(tree(), ElementsAre("a.zip", "out", "out/a"));
}

TEST_F(Extracting, KeepsHolesAsHoles) {
    const std::string zeros(8U << 20U, '\0');
    ASSERT_EQ(extract(ZipMaker().file("zeros", zeros + "end").file("all", zeros)), "");
    EXPECT_EQ(read("out/zeros"), zeros + "end");
    EXPECT_EQ(read("out/all"), zeros);
    EXPECT_LT(look("out/all").st_blocks * 512, 1 << 20);
}

// Into a folder that is there.

TEST_F(Extracting, ReplacesFilesThatAreThereAndKeepsTheOthers) {
    write("out/f/file", "old");
    write("out/f/other", "kept");
    ASSERT_EQ(extract(ZipMaker().file("f/file", "new").file("f/more", "more")), "");
    EXPECT_THAT(tree("out"), ElementsAre("f", "f/file", "f/more", "f/other"));
    EXPECT_EQ(read("out/f/file"), "new");
}

TEST_F(Extracting, ReplacesALinkThatIsThereAndWritesNothingThroughIt) {
    write("elsewhere/file", "untouched");
    makeFolder("out");
    std::filesystem::create_symlink(place / "elsewhere", place / "out/f");
    std::filesystem::create_symlink(place / "elsewhere/file", place / "out/link");
    ASSERT_EQ(extract(ZipMaker().file("f/file", "new").file("link", "new")), "");
    EXPECT_EQ(read("elsewhere/file"), "untouched");
    EXPECT_EQ(read("out/f/file"), "new");
    EXPECT_EQ(read("out/link"), "new");
}

TEST_F(Extracting, ReplacesAFileByAFolder) {
    write("out/f", "old");
    ASSERT_EQ(extract(ZipMaker().file("f/file")), "");
    EXPECT_EQ(read("out/f/file"), "contents");
}

TEST_F(Extracting, DoesNotReplaceAFolderByAFile) {
    write("out/f/file", "old");
    EXPECT_THAT(extract(ZipMaker().file("f")), HasSubstr("cannot replace “f”"));
    EXPECT_THAT(tree("out"), ElementsAre("f", "f/file"));
}

TEST_F(Extracting, LeavesAFolderThatIsThereAsItWasWhenOneOfTheItemsCannotTakeItsPlace) {
    write("out/a", "old");
    write("out/f/z/file", "old");
    EXPECT_THAT(extract(ZipMaker().file("a", "new").file("b").file("f/a").file("f/z")),
                HasSubstr("cannot replace “f/z”"));
    EXPECT_THAT(tree("out"), ElementsAre("a", "f", "f/z", "f/z/file"));
    EXPECT_EQ(read("out/a"), "old");
}

TEST_F(Extracting, LeavesAFolderThatIsThereAsItWasWhenOneInItMayNotBeWritten) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser may write to every folder";
    }
    write("out/a", "old");
    ::chmod(makeFolder("out/closed").c_str(), 0500);
    EXPECT_THAT(extract(ZipMaker().file("a", "new").file("closed/file")), HasSubstr("cannot unpack into “closed”"));
    ::chmod((place / "out/closed").c_str(), 0700);
    EXPECT_THAT(tree("out"), ElementsAre("a", "closed"));
    EXPECT_EQ(read("out/a"), "old");
}

TEST_F(Extracting, MergesIntoAFolderThatMayNotBeWrittenWhatLiesDeeper) {
    makeFolder("out/closed/open");
    ::chmod((place / "out/closed").c_str(), 0500);
    ASSERT_EQ(extract(ZipMaker().file("closed/open/file")), "");
    ::chmod((place / "out/closed").c_str(), 0700);
    EXPECT_EQ(read("out/closed/open/file"), "contents");
}

TEST_F(Extracting, ClosesUpFoldersAfterMergingThem) {
    makeFolder("out/closed");
    ASSERT_EQ(extract(ZipMaker()
                          .folder("closed/", S_IFDIR | 0500)
                          .file("closed/file")
                          .folder("new/", S_IFDIR | 0500)
                          .file("new/file")),
              "");
    EXPECT_EQ(modeOf("out/closed"), 0500U);
    EXPECT_EQ(modeOf("out/new"), 0500U);
    ::chmod((place / "out/closed").c_str(), 0700);
    ::chmod((place / "out/new").c_str(), 0700);
}

TEST_F(Extracting, LeavesAFolderThatIsThereAsItWasWhenTheArchiveIsDamaged) {
    write("out/a", "old");
    EXPECT_THAT(extract(ZipMaker().file("a", "new").add({.name = "b", .crc = 1})), HasSubstr("“b”: damaged"));
    EXPECT_THAT(tree("out"), ElementsAre("a"));
    EXPECT_EQ(read("out/a"), "old");
}

TEST_F(Extracting, RefusesAFileAsDestination) {
    write("out", "a file");
    EXPECT_THAT(extract(ZipMaker().file("a")), HasSubstr("cannot unpack into"));
    EXPECT_EQ(read("out"), "a file");
}

// Hostile archives.

TEST_F(Extracting, RefusesAbsolutePaths) { expectRefused(ZipMaker().file("ok").file("/tmp/x"), "absolute"); }

TEST_F(Extracting, RefusesPathsThatLeadOut) {
    expectRefused(ZipMaker().file("ok").file("../x"), "leads out");
    expectRefused(ZipMaker().file("a/../../x"), "leads out");
    expectRefused(ZipMaker().file("a/.."), "leads out");
    expectRefused(ZipMaker().link("..", "x"), "leads out");
}

TEST_F(Extracting, RefusesToWriteThroughALinkOfTheArchive) {
    expectRefused(ZipMaker().link("x", "/tmp").file("x/evil"), "lies below one that is no folder");
    expectRefused(ZipMaker().file("x/evil").link("x", "/tmp"), "lies below one that is no folder");
    expectRefused(ZipMaker().link("x", "/tmp").file("x", "evil"), "is there twice");
    expectRefused(ZipMaker().link("x", "/tmp").folder("./x/"), "is there twice");
    expectRefused(ZipMaker().link("a/x", "..").file("a/x!").file("a/x/b/c"), "lies below one that is no folder");
}

TEST_F(Extracting, KeepsLinksThatLeadOutAsTheyAre) {
    ASSERT_EQ(extract(ZipMaker().link("absolute", "/etc/passwd").link("up", "../../x")), "");
    EXPECT_EQ(targetOf("out/absolute"), "/etc/passwd");
    EXPECT_EQ(targetOf("out/up"), "../../x");
}

TEST_F(Extracting, RefusesLinksThatLeadNowhere) {
    expectRefused(ZipMaker().link("x", ""), "leads nowhere");
    expectRefused(ZipMaker().link("x", std::string("a\0b", 3)), "leads nowhere");
    expectRefused(ZipMaker().link("x", std::string(5000, 'a')), "damaged");
}

TEST_F(Extracting, RefusesAFileBelowAFile) {
    expectRefused(ZipMaker().file("a").file("a/b"), "lies below one that is no folder");
    expectRefused(ZipMaker().file("a").folder("a/"), "is there twice");
}

TEST_F(Extracting, RefusesTwoFilesOfOneName) {
    expectRefused(ZipMaker().file("a", "1").file("a", "2"), "is there twice");
    expectRefused(ZipMaker().file("d/a", "1").file("./d//a", "2"), "is there twice");
}

TEST_F(Extracting, TakesAFolderThatIsThereTwice) {
    ASSERT_EQ(extract(ZipMaker().folder("f/").file("f/a").folder("f/")), "");
    EXPECT_EQ(read("out/f/a"), "contents");
}

TEST_F(Extracting, TakesNamesThatDifferInLetterCaseForDifferentOnes) {
    ASSERT_EQ(extract(ZipMaker().file("Readme", "1").file("README", "2")), "");
    EXPECT_EQ(read("out/Readme"), "1");
    EXPECT_EQ(read("out/README"), "2");
}

TEST_F(Extracting, RefusesDevicesPipesAndSockets) {
    for (const std::uint32_t type : {S_IFCHR, S_IFBLK, S_IFIFO, S_IFSOCK}) {
        expectRefused(ZipMaker().add({.name = "x", .mode = type | 0666}), "neither a file nor a folder nor a link");
    }
}

TEST_F(Extracting, RefusesNamesThatCannotBe) {
    expectRefused(ZipMaker().file(std::string("a\0b", 3)), "NUL");
    expectRefused(ZipMaker().link("folder/", "x"), "has the name of a folder");
    expectRefused(ZipMaker().add({.name = "."}), "has no name");
    EXPECT_THAT(extract(ZipMaker().file(std::string(300, 'x'))), HasSubstr("cannot make"));
    EXPECT_THAT(tree(), ElementsAre("a.zip"));
}

TEST_F(Extracting, RefusesPathsNestedTooDeep) {
    std::string path = "x";
    for (int i = 0; i < 1000; ++i) {
        path += "/x";
    }
    expectRefused(ZipMaker().file(path), "nested too deep");
    EXPECT_EQ(extract(ZipMaker().file(path.substr(0, 999))), "");
}

TEST_F(Extracting, RefusesEncryptedEntries) {
    expectRefused(ZipMaker().file("a").add({.name = "b", .flags = 1}), "“b” is encrypted");
}

TEST_F(Extracting, RefusesUnknownMethods) {
    expectRefused(ZipMaker().add({.name = "a", .method = 14}), "method that is not supported (14)");
}

TEST_F(Extracting, RefusesMoreThanAThousandTimesTheSizeOfTheArchive) {
    const ExtractionLimits limits{.unsuspectedBytes = 1U << 20U};
    const std::string zeros(4U << 20U, '\0');
    const auto bomb = ZipMaker().add({.name = "a", .contents = zeros, .method = 8, .packed = deflated(zeros)});
    expectRefused(bomb, "more than 1000 times its own size", limits);
    EXPECT_EQ(extract(bomb), "");
}

TEST_F(Extracting, BelievesInSuchASizeEvenWhenItIsNotTrue) {
    expectRefused(ZipMaker().add({.name = "lie", .method = 8, .packed = "", .size = 4'000'000'000U}),
                  "more than 1000 times its own size");
}

TEST_F(Extracting, RefusesEntriesThatShareTheirData) {
    ZipMaker zip;
    zip.file("a", std::string(1000, 'a'));
    zip.add({.name = "b", .contents = std::string(1000, 'a'), .packed = "", .packedSize = 1000, .offset = 0});
    EXPECT_THAT(extract(zip), HasSubstr("overlap"));
    EXPECT_THAT(tree(), ElementsAre("a.zip"));
}

TEST_F(Extracting, RefusesEntriesThatReachIntoTheTableOfContents) {
    expectRefused(ZipMaker().add({.name = "a", .packedSize = 5000}), "overlap");
}

TEST_F(Extracting, RefusesMoreEntriesThanThereMayBe) {
    std::string bytes = ZipMaker().file("a").bytes();
    std::string wide;
    ZipMaker::put(wide, 0x06064b50, 4);
    ZipMaker::put(wide, 44, 8);
    ZipMaker::put(wide, 45, 4);
    ZipMaker::put(wide, 0, 8);
    ZipMaker::put(wide, 1'000'001, 8);
    ZipMaker::put(wide, 1'000'001, 8);
    ZipMaker::put(wide, 47, 8);
    ZipMaker::put(wide, ZipMaker().file("a").size(), 8);
    ZipMaker::put(wide, 0x07064b50, 4);
    ZipMaker::put(wide, 0, 4);
    ZipMaker::put(wide, bytes.size() - 22, 8);
    ZipMaker::put(wide, 1, 4);
    bytes.insert(bytes.size() - 22, wide);
    for (std::size_t i = bytes.size() - 14; i < bytes.size() - 10; ++i) {
        bytes[i] = '\xff';
    }
    EXPECT_THAT(extract(bytes), HasSubstr("more entries than an archive may have"));
}

TEST_F(Extracting, RefusesMoreItemsThanThereMayBeWithFoldersThatHaveNoEntry) {
    const ExtractionLimits limits{.items = 5};
    expectRefused(ZipMaker().file("a/b/c/d").file("a/b/e/f"), "more than 5 items", limits);
    EXPECT_EQ(extract(ZipMaker().folder("a/b/").folder("a/").file("a/b/c/d").file("a/b/e"), limits), "");
}

// Damaged archives.

TEST_F(Extracting, RefusesWrongChecksums) {
    expectRefused(ZipMaker().file("a").add({.name = "b", .crc = 1}), "damaged");
}

TEST_F(Extracting, RefusesWrongSizes) {
    const std::string text(1000, 'x');
    const std::string packed = deflated(text);
    for (const std::uint32_t size : {0U, 999U, 1001U}) {
        expectRefused(ZipMaker().add({.name = "a", .contents = text, .method = 8, .packed = packed, .size = size}),
                      "damaged");
        expectRefused(ZipMaker().add({.name = "a", .contents = text, .size = size}), "damaged");
    }
    expectRefused(ZipMaker().add({.name = "a", .contents = text, .method = 8, .packed = packed + "more"}), "damaged");
    expectRefused(ZipMaker().add({.name = "a", .contents = text, .method = 8, .packed = packed.substr(0, 5)}),
                  "damaged");
}

TEST_F(Extracting, RefusesDataThatCannotBeUnpacked) {
    expectRefused(ZipMaker().add({.name = "a", .method = 8, .packed = "\xff\xff\xff\xff\xff"}), "damaged");
    expectRefused(ZipMaker().add({.name = "a", .method = 8, .packed = ""}), "damaged");
}

TEST_F(Extracting, RefusesAHeaderThatContradictsTheTableOfContents) {
    expectRefused(ZipMaker().add({.name = "good", .localName = "evil"}), "damaged");
    expectRefused(ZipMaker().add({.name = "good", .localName = "longer name"}), "damaged");
}

TEST_F(Extracting, RefusesAnArchiveThatIsCutShortAnywhere) {
    const std::string bytes = ZipMaker().folder("f/").file("f/a", "some text").link("f/l", "a").bytes();
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        EXPECT_THAT(extract(bytes.substr(0, size)), HasSubstr("not a ZIP archive, or cut short")) << size;
    }
    EXPECT_THAT(tree(), ElementsAre("a.zip"));
}

TEST_F(Extracting, NeverPassesOffAChangedArchiveAsTheOriginal) {
    const std::string text = "some text";
    const std::string bytes = ZipMaker().file("a", text).bytes();
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        std::string changed = bytes;
        changed[at] = static_cast<char>(changed[at] ^ 0x55);
        if (extract(changed).empty()) {
            // What is left are fields that no contents depend on: versions, dates, permissions, a name in both places.
            EXPECT_EQ(read("out/a"), text) << at;
        }
        std::filesystem::remove_all(place / "out");
    }
}

TEST_F(Extracting, RefusesWhatIsNoArchive) {
    EXPECT_THAT(extract(""), HasSubstr("not a ZIP archive"));
    EXPECT_THAT(extract(std::string(100'000, 'x')), HasSubstr("not a ZIP archive"));
    EXPECT_THROW(extractArchive(place / "missing", place / "out"), ToolFailure);
    EXPECT_THROW(extractArchive(place.path(), place / "out"), ToolFailure);
    ASSERT_EQ(::mkfifo((place / "pipe").c_str(), 0600), 0);
    EXPECT_THROW(extractArchive(place / "pipe", place / "out"), ToolFailure);
}

TEST_F(Extracting, RefusesOneOfSeveralVolumes) {
    std::string bytes = ZipMaker().file("a").bytes();
    bytes[bytes.size() - 18] = 1;
    EXPECT_THAT(extract(bytes), HasSubstr("several volumes"));
}

// Beyond 4 GiB. The archive is a file with a hole, so that it takes no room.

TEST_F(Extracting, UnpacksAnEntryBeyondFourGibibytes) {
    constexpr std::uint64_t size = (std::uint64_t{4} << 30U) + 5;
    const std::string tail = "tail!";
    const auto zeros = static_cast<z_off_t>(size - tail.size());
    // The checksum of zeros, put together from that of one block.
    const std::string block(1U << 20U, '\0');
    uLong crc = crcOf("");
    for (z_off_t done = 0; done < zeros; done += static_cast<z_off_t>(block.size())) {
        crc = ::crc32_combine(crc, crcOf(block), static_cast<z_off_t>(block.size()));
    }
    crc = ::crc32_combine(crc, crcOf(tail), static_cast<z_off_t>(tail.size()));

    std::string common("\0\0\0\0\0\0\0\0", 8);
    ZipMaker::put(common, crc, 4);
    ZipMaker::put(common, 0xffffffffU, 4);
    ZipMaker::put(common, 0xffffffffU, 4);
    std::string wideSizes("\1\0\x10\0", 4);
    ZipMaker::put(wideSizes, size, 8);
    ZipMaker::put(wideSizes, size, 8);
    std::string local;
    ZipMaker::put(local, 0x04034b50, 4);
    ZipMaker::put(local, 45, 2);
    local += common;
    ZipMaker::put(local, 1, 2);
    ZipMaker::put(local, wideSizes.size(), 2);
    local += "a" + wideSizes;
    std::string central;
    ZipMaker::put(central, 0x02014b50, 4);
    ZipMaker::put(central, 0x032d, 2);
    ZipMaker::put(central, 45, 2);
    central += common;
    ZipMaker::put(central, 1, 2);
    ZipMaker::put(central, wideSizes.size(), 2);
    ZipMaker::put(central, 0, 6);
    ZipMaker::put(central, std::uint64_t{S_IFREG | 0644} << 16U, 4);
    ZipMaker::put(central, 0, 4);
    central += "a" + wideSizes;
    const std::uint64_t directory = local.size() + size;
    std::string end;
    ZipMaker::put(end, 0x06064b50, 4);
    ZipMaker::put(end, 44, 8);
    ZipMaker::put(end, 0x2d032d, 4);
    ZipMaker::put(end, 0, 8);
    ZipMaker::put(end, 1, 8);
    ZipMaker::put(end, 1, 8);
    ZipMaker::put(end, central.size(), 8);
    ZipMaker::put(end, directory, 8);
    ZipMaker::put(end, 0x07064b50, 4);
    ZipMaker::put(end, 0, 4);
    ZipMaker::put(end, directory + central.size(), 8);
    ZipMaker::put(end, 1, 4);
    ZipMaker::put(end, 0x06054b50, 4);
    ZipMaker::put(end, 0, 4);
    ZipMaker::put(end, 1, 2);
    ZipMaker::put(end, 1, 2);
    ZipMaker::put(end, central.size(), 4);
    ZipMaker::put(end, 0xffffffffU, 4);
    ZipMaker::put(end, 0, 2);

    std::ofstream archive(place / "a.zip", std::ios::binary);
    archive << local;
    archive.seekp(zeros, std::ios::cur);
    archive << tail << central << end;
    archive.close();
    extractArchive(place / "a.zip", place / "out");
    EXPECT_EQ(look("out/a").st_size, static_cast<off_t>(size));
    std::ifstream file(place / "out/a", std::ios::binary);
    file.seekg(-5, std::ios::end);
    std::string last(5, '\0');
    file.read(last.data(), 5);
    EXPECT_EQ(last, tail);
}

}  // namespace
