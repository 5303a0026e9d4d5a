// The operations as the installer uses them, on the host as it is.
#include "lib/KZFileManager.h"

#include <sys/stat.h>
#include <unistd.h>

#include "tests/lib/FilesFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

namespace {

using std::chrono::seconds;

// Only the user and what needs administrator rights are invented.
class OnTheRealHost : public FilesFixture {
protected:
    OnTheRealHost() {
        auto host = makeHost();
        host.files = platform::linux_host::services().files;
        host.workspace = platform::linux_host::services().workspace;
        scope.emplace(host);
    }

    // What lies in the Trash, by whatever name.
    std::vector<std::string> trashed() const {
        std::vector<std::string> contents;
        std::error_code none;
        for (const auto& entry : std::filesystem::directory_iterator(trash, none)) {
            contents.push_back(std::filesystem::is_directory(entry) ? "a folder" : read(entry.path().string()));
        }
        return contents;
    }

    std::optional<platform::ScopedHost> scope;
};

TEST_F(OnTheRealHost, ReplacesAFileByTrashingTheOldOne) {
    const auto source = add("source", "new");
    const auto there = add("there/file", "old");
    EXPECT_TRUE(KZFileManager::createDirectory(disk / "there", seconds{10}));
    EXPECT_TRUE(KZFileManager::trashFile(there, seconds{10}));
    EXPECT_TRUE(KZFileManager::copyFile(source, there, seconds{10}));
    EXPECT_TRUE(KZFileManager::touchFile(there));
    EXPECT_EQ(read(there), "new");
    EXPECT_THAT(trashed(), ElementsAre("old"));
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(OnTheRealHost, KeepsEveryItemOfOneNameThatIsTrashedInTheSameSecond) {
    const auto file = disk / "file";
    for (const char* contents : {"1", "2", "3", "4"}) {
        add("file", contents);
        EXPECT_TRUE(KZFileManager::trashFile(file, seconds{10}));
    }
    EXPECT_THAT(trashed(), UnorderedElementsAre("1", "2", "3", "4"));
}

TEST_F(OnTheRealHost, TrashesAFolderAPackageAndALinkAsOneItemEach) {
    add("folder/a");
    add("Plug.vst3/Contents/b");
    const auto target = add("target", "kept");
    const auto link = addLink("link", "target");
    EXPECT_TRUE(KZFileManager::trashFile(disk / "folder", seconds{10}));
    EXPECT_TRUE(KZFileManager::trashFile(disk / "Plug.vst3", seconds{10}));
    EXPECT_TRUE(KZFileManager::trashFile(link, seconds{10}));
    EXPECT_EQ(trashed().size(), 3U);
    EXPECT_EQ(read(target), "kept");
    EXPECT_FALSE(stands(link));
}

TEST_F(OnTheRealHost, TrashesAFileThatIsReadOnly) {
    const auto file = add("file", "old");
    ::chmod(file.c_str(), 0444);
    EXPECT_TRUE(KZFileManager::trashFile(file, seconds{10}));
    EXPECT_THAT(trashed(), ElementsAre("old"));
}

TEST_F(OnTheRealHost, TrashesAndRemovesALockedFile) {
    const auto first = add("first", "1");
    const auto second = add("second", "2");
    KZFileManager::lockFile(first);
    KZFileManager::lockFile(second);
    if (!KZFileManager::isFileLocked(first)) {
        GTEST_SKIP() << "the flag needs the superuser and a file system that knows it";
    }
    EXPECT_TRUE(KZFileManager::trashFile(first, seconds{10}));
    EXPECT_TRUE(KZFileManager::removeFile(second, seconds{10}));
    EXPECT_FALSE(stands(first));
    EXPECT_FALSE(stands(second));
}

TEST_F(OnTheRealHost, CopiesIntoALockedFolder) {
    const auto source = add("source", "new");
    const auto folder = add("folder/");
    KZFileManager::lockFile(folder);
    if (!KZFileManager::isFileLocked(folder)) {
        GTEST_SKIP() << "the flag needs the superuser and a file system that knows it";
    }
    EXPECT_TRUE(KZFileManager::copyFile(source, folder + "/copy", seconds{10}));
    EXPECT_FALSE(KZFileManager::isFileLocked(folder));
}

TEST_F(OnTheRealHost, RefusesToWriteWhereTheUserMayNot) {
    if (::getuid() == 0) {
        GTEST_SKIP() << "the superuser may write everywhere";
    }
    const auto source = add("source");
    const auto folder = add("folder/");
    const auto inside = add("folder/inside");
    ::chmod(folder.c_str(), 0555);
    authorization.rightsStatus = -60006;
    EXPECT_FALSE(KZFileManager::copyFile(source, folder + "/copy", seconds{10}));
    EXPECT_FALSE(KZFileManager::createDirectory(folder + "/new", seconds{10}));
    EXPECT_FALSE(KZFileManager::trashFile(inside, seconds{10}));
    EXPECT_FALSE(KZFileManager::removeFile(inside, seconds{10}));
    ::chmod(folder.c_str(), 0755);
    EXPECT_TRUE(stands(inside));
    EXPECT_EQ(authorization.requests.size(), 4U);
}

TEST_F(OnTheRealHost, CopiesAFolderWithLinksAsLinksAndNothingElse) {
    add("from/sub/file", "contents");
    addLink("from/link", "sub/file");
    addLink("from/dangling", "nowhere");
    EXPECT_TRUE(KZFileManager::copyFile(disk / "from", disk / "to", seconds{10}));
    EXPECT_EQ(read(disk / "to/sub/file"), "contents");
    EXPECT_TRUE(std::filesystem::is_symlink(disk / "to/link"));
    EXPECT_TRUE(std::filesystem::is_symlink(disk / "to/dangling"));
    EXPECT_FALSE(KZFileManager::copyFile(disk / "from", disk / "from/sub/itself", ShouldAuth::no));
    EXPECT_FALSE(stands(disk / "from/sub/itself"));
}

TEST_F(OnTheRealHost, WorksWithAnyNameThatAFileSystemTakes) {
    const std::string longest(255, 'n');
    for (const std::string& name : {std::string("line\nbreak"), std::string("🎹 e\u0301"), std::string("\xff\xfe"),
                                    std::string("%@ %s %n"), std::string("-rf"), longest}) {
        const auto file = add("from/" + name, "contents");
        const auto copy = disk / ("to/" + name);
        EXPECT_TRUE(KZFileManager::createDirectory(disk / "to", seconds{10}));
        EXPECT_TRUE(KZFileManager::copyFile(file, copy, seconds{10})) << name;
        EXPECT_TRUE(KZFileManager::touchFile(copy)) << name;
        EXPECT_TRUE(KZFileManager::trashFile(copy, seconds{10})) << name;
        EXPECT_FALSE(stands(copy)) << name;
    }
    EXPECT_EQ(trashed().size(), 6U);
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(OnTheRealHost, AddsUpATreeThatIsLargeEnoughForTwoThreads) {
    std::uint64_t expected = 0;
    for (int folder = 0; folder < 300; ++folder) {
        const auto bytes = static_cast<std::size_t>(folder % 7);
        add("tree/" + std::to_string(folder % 10) + "/" + std::to_string(folder) + "/file", std::string(bytes, 'x'));
        expected += bytes;
    }
    addLink("tree/3/loop", "..");
    for (int again = 0; again < 20; ++again) {
        EXPECT_EQ(KZFileManager::fileSize(disk / "tree"), expected);
    }
}

}  // namespace
