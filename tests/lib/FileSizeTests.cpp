#include <unistd.h>

#include "tests/lib/FilesFixture.h"

using KZFileManager::fileSize;

namespace {

class FileSizes : public FilesFixture {};

TEST_F(FileSizes, OfAFileAreItsBytes) {
    EXPECT_EQ(fileSize(add("file", "12345")), 5U);
    EXPECT_EQ(fileSize(add("empty", "")), 0U);
}

TEST_F(FileSizes, OfAFileAreNotCutOffAt4Gigabytes) {
    const auto path = add("huge");
    std::filesystem::resize_file(path, 5'000'000'000ULL);
    EXPECT_EQ(fileSize(path), 5'000'000'000ULL);
}

TEST_F(FileSizes, OfNothingAreNought) {
    EXPECT_EQ(fileSize(disk / "gone"), 0U);
    EXPECT_EQ(fileSize(add("folder/")), 0U);
    EXPECT_EQ(fileSize(""), 0U);
}

TEST_F(FileSizes, OfAFolderAddUpEverythingBelowIt) {
    add("folder/a", "1");
    add("folder/.hidden", "22");
    add("folder/sub/b", "333");
    add("folder/sub/deep/c", "4444");
    EXPECT_EQ(fileSize(disk / "folder"), 10U);
}

TEST_F(FileSizes, FollowALinkToAFolder) {
    add("elsewhere/x", "123");
    add("folder/y", "1");
    addLink("folder/link", "../elsewhere");
    EXPECT_EQ(fileSize(disk / "folder"), 4U);
    EXPECT_EQ(fileSize(disk / "folder/link"), 3U);
}

TEST_F(FileSizes, OfALinkToAFileOrToNothingAreThoseOfTheLink) {
    add("file", "123");
    EXPECT_EQ(fileSize(addLink("link", "file")), 4U);
    EXPECT_EQ(fileSize(addLink("dangling", "nowhere")), 7U);
    add("folder/");
    addLink("folder/link", "../file");
    EXPECT_EQ(fileSize(disk / "folder"), 7U);
}

TEST_F(FileSizes, CountWhatIsReachedTwiceTwice) {
    add("folder/a/x", "123");
    addLink("folder/b", "a");
    EXPECT_EQ(fileSize(disk / "folder"), 6U);
}

TEST_F(FileSizes, EndWhereAFolderLiesWithinItself) {
    add("folder/sub/x", "123");
    addLink("folder/sub/up", "..");
    addLink("folder/self", ".");
    EXPECT_EQ(fileSize(disk / "folder"), 3U);
}

TEST_F(FileSizes, LeaveOutAFolderThatCannotBeRead) {
    add("folder/a", "1");
    add("folder/locked/b", "22");
    files.fails = [&](const Call& call) -> std::optional<int> {
        const bool refused = call.operation == Operation::contentsOfDirectory && call.path == disk / "folder/locked";
        return refused ? std::optional(EACCES) : std::nullopt;
    };
    EXPECT_EQ(fileSize(disk / "folder"), 1U);
    files.fails = {};
}

TEST_F(FileSizes, ReachAsDeepAsPathsDo) {
    std::string path = "folder/";
    while (path.size() < 3500) {
        path += std::string(100, 'd') + "/";
    }
    add(path + "x", "123");
    EXPECT_EQ(fileSize(disk / "folder"), 3U);
}

}  // namespace
