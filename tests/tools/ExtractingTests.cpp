// Unpacking sound archives.
#include <sys/xattr.h>

#include "tests/tools/ExtractingFixture.h"

using platform::linux_host::extractArchive;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

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
