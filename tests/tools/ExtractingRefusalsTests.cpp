// Archives that are hostile or damaged.
#include "tests/tools/ExtractingFixture.h"

using platform::linux_host::extractArchive;
using platform::linux_host::ExtractionLimits;
using platform::linux_host::ToolFailure;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

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

}  // namespace
