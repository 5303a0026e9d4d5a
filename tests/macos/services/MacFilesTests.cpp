// What copying and moving on a Mac promise beyond the contract. The sticky bit stands in for the lock (Darwin.h).
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>

#include "platform/macos/services/files/MacFileManager.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

class MacFiles : public testing::Test {
protected:
    std::string add(const std::string& name) {
        std::ofstream(m_folder / name) << "text";
        return m_folder / name;
    }
    void lock(const std::string& name) { setMode(name, 01644); }
    void setMode(const std::string& name, mode_t mode) { ASSERT_EQ(::chmod((m_folder / name).c_str(), mode), 0); }
    mode_t mode(const std::string& path) const {
        struct stat status {};
        EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
        return status.st_mode & 07777U;
    }
    // None when there is no other file system to move to.
    std::unique_ptr<fakes::TemporaryFolder> otherVolume() const {
        struct stat here {};
        struct stat there {};
        const bool isThere = ::stat(m_folder.path().c_str(), &here) == 0 && ::stat("/dev/shm", &there) == 0 &&
                             here.st_dev != there.st_dev && ::access("/dev/shm", W_OK) == 0;
        return isThere ? std::make_unique<fakes::TemporaryFolder>("/dev/shm") : nullptr;
    }
    std::size_t entries() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(m_folder.path()), {}));
    }

    fakes::TemporaryFolder m_folder;
    platform::macos::MacFileManager m_files;
};

TEST_F(MacFiles, LeaveNothingBesideACopyThatWasRefused) {
    const std::string source = add("source");
    const std::string taken = add("taken");
    EXPECT_TRUE(m_files.copyItem(source, taken));
    EXPECT_EQ(entries(), 2U);
}

TEST_F(MacFiles, GoToAnotherVolumeByACopy) {
    const auto other = otherVolume();
    if (!other) {
        GTEST_SKIP() << "no other file system to move to";
    }
    std::filesystem::create_directory(m_folder / "folder");
    add("folder/file");
    EXPECT_FALSE(m_files.moveItem(m_folder / "folder", *other / "folder"));
    EXPECT_EQ(m_files.readFile(*other / "folder/file", 100), "text");
    EXPECT_EQ(entries(), 0U);
}

TEST_F(MacFiles, StayWholeWhenALockedOneAmongThemCannotGoToAnotherVolume) {
    const auto other = otherVolume();
    if (!other) {
        GTEST_SKIP() << "no other file system to move to";
    }
    std::filesystem::create_directory(m_folder / "folder");
    add("folder/file");
    add("folder/locked");
    lock("folder/locked");
    EXPECT_EQ(m_files.moveItem(m_folder / "folder", *other / "folder")->code, EPERM);
    EXPECT_TRUE(m_files.fileExists(m_folder / "folder/file"));
    EXPECT_TRUE(m_files.fileExists(m_folder / "folder/locked"));
    EXPECT_TRUE(std::filesystem::is_empty(other->path()));
    EXPECT_EQ(entries(), 1U);
}

TEST_F(MacFiles, LeaveFromReadOnlyFoldersToAnotherVolume) {
    const auto other = otherVolume();
    if (!other) {
        GTEST_SKIP() << "no other file system to move to";
    }
    std::filesystem::create_directory(m_folder / "folder");
    std::filesystem::create_directory(m_folder / "folder/fixed");
    add("folder/fixed/file");
    setMode("folder/fixed", 0555);
    EXPECT_FALSE(m_files.moveItem(m_folder / "folder", *other / "folder"));
    EXPECT_EQ(m_files.readFile(*other / "folder/fixed/file", 100), "text");
    EXPECT_EQ(mode(*other / "folder/fixed"), 0555U);
    EXPECT_EQ(entries(), 0U);
}

TEST_F(MacFiles, AreCopiedWithTheirLocks) {
    std::filesystem::create_directory(m_folder / "folder");
    add("folder/locked");
    lock("folder/locked");
    EXPECT_FALSE(m_files.copyItem(m_folder / "folder", m_folder / "copy"));
    EXPECT_FALSE(m_files.copyItem(m_folder / "folder/locked", m_folder / "one"));
    EXPECT_EQ(mode(m_folder / "copy/locked"), 01644U);
    EXPECT_EQ(mode(m_folder / "one"), 01644U);
    EXPECT_EQ(entries(), 3U);
}

TEST_F(MacFiles, WithLocksInThemLeaveNothingBehindWhenTheyCannotBeCopied) {
    add("locked");
    lock("locked");
    std::filesystem::create_directory(m_folder / "folder");
    std::filesystem::copy(m_folder / "locked", m_folder / "folder/locked");
    const std::string tooLong = m_folder / std::string(300, 'x');  // which the staged name is not
    EXPECT_TRUE(m_files.copyItem(m_folder / "locked", tooLong));
    EXPECT_TRUE(m_files.copyItem(m_folder / "folder", tooLong));
    EXPECT_EQ(entries(), 2U);
}

TEST_F(MacFiles, AreCopiedThoughAFolderThatIsReadOnlyCannotBeCloned) {
    std::filesystem::create_directory(m_folder / "folder");
    std::filesystem::create_directory(m_folder / "folder/fixed");
    add("folder/fixed/file");
    setMode("folder/fixed", 0555);
    EXPECT_FALSE(m_files.copyItem(m_folder / "folder/", m_folder / "copy"));
    EXPECT_EQ(m_files.readFile(m_folder / "copy/fixed/file", 100), "text");
    EXPECT_EQ(entries(), 2U);
}

TEST_F(MacFiles, KeepTheBitsThatLetThemRunAsSomebodyElse) {
    const std::string tool = add("tool");
    setMode("tool", 06755);
    EXPECT_FALSE(m_files.copyItem(tool, m_folder / "copy"));
    EXPECT_EQ(mode(m_folder / "copy"), 06755U);
}

TEST_F(MacFiles, AreNotFoundUnderANameThatHoldsANul) {
    const std::string source = add("source");
    const std::string cut = source + std::string("\0x", 2);
    EXPECT_FALSE(m_files.fileExists(cut));
    EXPECT_EQ(m_files.removeItem(cut)->code, EINVAL);
    EXPECT_TRUE(m_files.fileExists(source));
}

}  // namespace
