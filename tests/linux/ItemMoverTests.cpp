#include "platform/linux/services/files/ItemMover.h"

#include "platform/linux/services/workspace/Mounts.h"
#include "tests/linux/FilesFixture.h"

namespace {

using platform::linux_host::moveItem;

// From the test's folder to one on another file system.
class MovingAcross : public FilesFixture {
protected:
    void SetUp() override {
        if (::access("/dev/shm", W_OK) != 0 || platform::linux_host::areOnSameMount(at("."), "/dev/shm")) {
            GTEST_SKIP() << "no second file system at /dev/shm";
        }
        m_far.emplace("/dev/shm");
    }
    std::string farAt(const std::string& name) const { return *m_far / name; }

private:
    std::optional<fakes::TemporaryFolder> m_far;
};

TEST_F(MovingAcross, TakesTheWholeTreeAndLeavesNothing) {
    makeFolder("tree/closed");
    write("tree/closed/file", "text");
    link("tree/link", "nowhere");
    setMode("tree/closed", 0555);
    const auto failed = moveItem(at("tree"), farAt("tree"));
    EXPECT_EQ(::chmod(farAt("tree/closed").c_str(), 0755), 0);
    EXPECT_FALSE(failed) << failed->description;
    EXPECT_EQ(m_files.readFile(farAt("tree/closed/file"), 100), "text");
    EXPECT_EQ(m_files.destinationOfSymbolicLink(farAt("tree/link")), "nowhere");
    EXPECT_TRUE(names(".").empty());
}

TEST_F(MovingAcross, NeverReplaces) {
    write("file", "new");
    ASSERT_FALSE(m_files.writeAtomically(farAt("file"), "old"));
    EXPECT_EQ(moveItem(at("file"), farAt("file"))->code, EEXIST);
    EXPECT_EQ(m_files.readFile(farAt("file"), 100), "old");
    EXPECT_EQ(read("file"), "new");
}

TEST_F(MovingAcross, LockedFileInAFolderIsFoundBeforeAnythingIsCopied) {
    makeFolder("tree");
    write("tree/file", "x");
    if (m_files.setImmutable(at("tree/file"), true)) {
        GTEST_SKIP() << "no right to lock files, or no such flag here";
    }
    const auto failed = moveItem(at("tree"), farAt("tree"));
    EXPECT_FALSE(m_files.setImmutable(at("tree/file"), false));
    ASSERT_TRUE(failed);
    EXPECT_EQ(read("tree/file"), "x");
    EXPECT_FALSE(m_files.fileExists(farAt("tree")));
}

TEST_F(MovingAcross, CopyIsTakenBackWhenTheOriginalCannotGo) {
    if (isSuperuser()) {
        GTEST_SKIP() << "modes do not stop the superuser";
    }
    makeFolder("closed/tree");
    write("closed/tree/file", "x");
    write("closed/file", "x");
    setMode("closed", 0555);
    const auto tree = moveItem(at("closed/tree"), farAt("tree"));
    const auto file = moveItem(at("closed/file"), farAt("file"));
    setMode("closed", 0755);
    EXPECT_TRUE(tree);
    EXPECT_TRUE(file);
    EXPECT_EQ(read("closed/tree/file"), "x");
    EXPECT_EQ(read("closed/file"), "x");
    EXPECT_FALSE(m_files.fileExists(farAt("tree")));
    EXPECT_FALSE(m_files.fileExists(farAt("file")));
}

using Moving = FilesFixture;

TEST_F(Moving, FolderIntoItselfFails) {
    makeFolder("folder/sub");
    EXPECT_TRUE(moveItem(at("folder"), at("folder/sub/folder")));
    EXPECT_TRUE(isThere("folder/sub"));
}

TEST_F(Moving, EmptyFolderAtTheDestinationIsNotReplaced) {
    makeFolder("from/sub");
    makeFolder("to");
    EXPECT_EQ(moveItem(at("from"), at("to"))->code, EEXIST);
    EXPECT_TRUE(isThere("from/sub"));
}

TEST_F(Moving, ReadOnlyFolderMovesAndStaysReadOnly) {
    makeFolder("from/tree");
    makeFolder("to");
    write("from/tree/file", "x");
    setMode("from/tree", 0555);
    const auto failed = moveItem(at("from/tree"), at("to/tree"));
    const auto mode = m_files.attributes(at("to/tree")).value_or(platform::FileAttributes{}).permissions;
    (void)::chmod(at("to/tree").c_str(), 0755);
    (void)::chmod(at("from/tree").c_str(), 0755);
    ASSERT_FALSE(failed) << failed->description;
    EXPECT_EQ(mode, 0555U);
    EXPECT_EQ(read("to/tree/file"), "x");
}

TEST_F(Moving, ReadOnlyFolderThatCannotMoveStaysReadOnly) {
    makeFolder("from/tree");
    makeFolder("to/tree");
    setMode("from/tree", 0555);
    EXPECT_EQ(moveItem(at("from/tree"), at("to/tree"))->code, EEXIST);
    EXPECT_EQ(m_files.attributes(at("from/tree"))->permissions, 0555U);
    makeFolder("closed");
    setMode("closed", 0555);
    const auto failed = moveItem(at("from/tree"), at("closed/tree"));
    setMode("closed", 0755);
    EXPECT_EQ(failed.has_value(), !isSuperuser());
    EXPECT_EQ(m_files.attributes(at(failed ? "from/tree" : "closed/tree"))->permissions, 0555U);
    setMode(failed ? "from/tree" : "closed/tree", 0755);
}

TEST_F(Moving, ReadOnlyFileMoves) {
    write("from", "x");
    setMode("from", 0400);
    EXPECT_FALSE(moveItem(at("from"), at("to")));
    EXPECT_TRUE(isThere("to"));
}

}  // namespace
