#include "platform/linux/rights/helper/RenameOnly.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <functional>
#include <string>

#include "tests/fakes/TemporaryFolder.h"

namespace {

class HeldToRenaming : public testing::Test {
protected:
    void SetUp() override {
        if (!platform::rights::canBeHeldToRenaming()) {
            GTEST_SKIP() << "this kernel has no means for it";
        }
        std::ofstream(folder / "file") << "text";
        ASSERT_EQ(::mkdir((folder / "folder").c_str(), 0755), 0);
    }

    // The errno of the call in a process that is held to it; 0: it succeeded.
    static int errorOf(const std::function<int()>& call) {
        const pid_t child = ::fork();
        if (child == 0) {
            constexpr int notHeld = 255;
            if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || platform::rights::holdToRenaming() != 0) {
                ::_exit(notHeld);
            }
            ::_exit(call() < 0 ? errno : 0);
        }
        int status = -1;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
    const char* path(const std::string& name) { return (m_path = folder / name).c_str(); }

    fakes::TemporaryFolder folder;

private:
    std::string m_path;
};

TEST_F(HeldToRenaming, AProcessRenames) {
    const std::string to = folder / "renamed";
    EXPECT_EQ(errorOf([&] { return ::rename(path("file"), to.c_str()); }), 0);
    EXPECT_EQ(errorOf([&] { return ::renameat2(AT_FDCWD, to.c_str(), AT_FDCWD, path("file"), RENAME_NOREPLACE); }), 0);
}

TEST_F(HeldToRenaming, AProcessReads) {
    EXPECT_EQ(errorOf([&] { return ::open(path("file"), O_RDONLY | O_CLOEXEC); }), 0);
    EXPECT_EQ(errorOf([&] { return ::open(path("folder"), O_PATH | O_DIRECTORY); }), 0);
    struct stat found {};
    EXPECT_EQ(errorOf([&] { return ::stat(path("file"), &found); }), 0);
}

TEST_F(HeldToRenaming, AProcessMakesNothing) {
    const std::string item = folder / "item";
    EXPECT_EQ(errorOf([&] { return ::open(item.c_str(), O_RDONLY | O_CREAT, 0644); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::creat(item.c_str(), 0644); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::mkdir(item.c_str(), 0755); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::mknod(item.c_str(), S_IFREG | 0644, 0); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::mkfifo(item.c_str(), 0644); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::symlink("file", item.c_str()); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::link(path("file"), item.c_str()); }), EPERM);
    EXPECT_NE(::access(item.c_str(), F_OK), 0);
}

TEST_F(HeldToRenaming, AProcessWritesAndRemovesNothing) {
    EXPECT_EQ(errorOf([&] { return ::open(path("file"), O_WRONLY); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::open(path("file"), O_RDWR); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::open(path("file"), O_RDONLY | O_TRUNC); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::truncate(path("file"), 0); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::unlink(path("file")); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::rmdir(path("folder")); }), EPERM);
}

TEST_F(HeldToRenaming, AProcessChangesNoAttributes) {
    EXPECT_EQ(errorOf([&] { return ::chmod(path("file"), 0777); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::fchmodat(AT_FDCWD, path("file"), 0777, 0); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::fchmod(::open(path("file"), O_RDONLY), 0777); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::chown(path("file"), ::getuid(), ::getgid()); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::lchown(path("file"), ::getuid(), ::getgid()); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::utimensat(AT_FDCWD, path("file"), nullptr, 0); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::setxattr(path("file"), "user.x", "y", 1, 0); }), EPERM);
    EXPECT_EQ(errorOf([&] { return ::removexattr(path("file"), "user.x"); }), EPERM);
}

}  // namespace
