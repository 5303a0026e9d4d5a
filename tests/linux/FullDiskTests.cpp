// Operations on a file system that is full half-way: a small one in memory, in a mount namespace of a child process.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>

#include <functional>

#include "tests/linux/FilesFixture.h"

namespace {

constexpr int noMount = 77;

class FullDisk : public FilesFixture {
protected:
    // Runs `work` with a file system of 1 MiB mounted at "disk"; its result is the child's exit code.
    int onSmallDisk(const std::function<int()>& work) {
        makeFolder("disk");
        const pid_t child = ::fork();
        if (child == 0) {
            const bool mounted = ::unshare(CLONE_NEWNS) == 0 &&
                                 ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                                 ::mount("tmpfs", at("disk").c_str(), "tmpfs", 0, "size=1m") == 0;
            ::_exit(mounted ? work() : noMount);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
};

TEST_F(FullDisk, CopyFailsAndLeavesNothing) {
    makeFolder("from");
    write("from/small", "x");
    write("from/large", std::string(2'000'000, 'x'));
    const int result = onSmallDisk([&] {
        const auto tree = m_files.copyItem(at("from"), at("disk/to"));
        const auto file = m_files.copyItem(at("from/large"), at("disk/file"));
        const bool refused = tree && tree->code == ENOSPC && file && file->code == ENOSPC;
        return refused && names("disk").empty() ? 0 : 1;
    });
    if (result == noMount) {
        GTEST_SKIP() << "no right to mount a file system";
    }
    EXPECT_EQ(result, 0);
}

TEST_F(FullDisk, MoveFailsAndTheItemStays) {
    makeFolder("from");
    write("from/large", std::string(2'000'000, 'x'));
    const int result = onSmallDisk([&] {
        const auto failed = m_files.moveItem(at("from"), at("disk/to"));
        return failed && failed->code == ENOSPC && names("disk").empty() && isThere("from/large") ? 0 : 1;
    });
    if (result == noMount) {
        GTEST_SKIP() << "no right to mount a file system";
    }
    EXPECT_EQ(result, 0);
    EXPECT_EQ(read("from/large").size(), 2'000'000U);
}

TEST_F(FullDisk, RewrittenFileKeepsItsOldContents) {
    const int result = onSmallDisk([&] {
        write("disk/file", "old");
        const auto failed = m_files.writeAtomically(at("disk/file"), std::string(2'000'000, 'x'));
        return failed && failed->code == ENOSPC && read("disk/file") == "old" && names("disk").size() == 1 ? 0 : 1;
    });
    if (result == noMount) {
        GTEST_SKIP() << "no right to mount a file system";
    }
    EXPECT_EQ(result, 0);
}

TEST_F(FullDisk, AppendReportsThatTheDiskIsFull) {
    const int result = onSmallDisk([&] {
        write("disk/log", "");
        const auto handle = m_files.openForAppending(at("disk/log"));
        const auto failed = handle ? handle->append(std::string(2'000'000, 'x')) : platform::Failure{};
        return failed && failed->code == ENOSPC ? 0 : 1;
    });
    if (result == noMount) {
        GTEST_SKIP() << "no right to mount a file system";
    }
    EXPECT_EQ(result, 0);
}

}  // namespace
