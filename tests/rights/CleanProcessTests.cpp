#include "platform/linux/rights/helper/CleanProcess.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

#include "tests/fakes/TemporaryFolder.h"
#include "tests/rights/RawHelper.h"

namespace {

using tests::RawHelper;

// Whoever starts the helper has left as much as possible for it to stumble over.
void litter() {
    ::setenv("LD_LIBRARY_PATH", "/tmp", 1);
    ::setenv("BASH_ENV", "/tmp/evil", 1);
    ::setenv("POSIXLY_CORRECT", "1", 1);
    ::umask(0);
    if (::chdir("/tmp") != 0) {
        ::_exit(125);
    }
    constexpr rlimit ten{10, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &ten);
    constexpr rlimit few{64, 4096};
    ::setrlimit(RLIMIT_NOFILE, &few);
    for (int i = 0; i < 20; ++i) {
        static_cast<void>(::open("/etc/shadow", O_RDONLY));  // not closed when a program is executed
    }
    for (int number = 1; number < NSIG; ++number) {
        ::signal(number, SIG_IGN);
    }
    sigset_t all;
    sigfillset(&all);
    ::sigprocmask(SIG_SETMASK, &all, nullptr);
}

class ToolOfTheHelper : public tests::WithHelper {
protected:
    void SetUp() override {
        WithHelper::SetUp();
        if (IsSkipped()) {
            return;
        }
        helper = std::make_unique<RawHelper>(litter);
        ASSERT_TRUE(helper->isThere());
    }
    // A line of what the kernel says of the running tool.
    std::string statusLine(const std::string& name) const {
        std::ifstream file("/proc/" + std::to_string(helper->tool) + "/status");
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with(name + ":\t")) {
                return line.substr(name.size() + 2);
            }
        }
        return "none";
    }
    std::string sleepingToolsPath(const std::string& name) {
        EXPECT_EQ(helper->run({"/bin/sleep", "5"}), 0);
        const std::string folder = "/proc/" + std::to_string(helper->tool) + "/";
        // The last moments of the exchange of the child for the tool are none of the tool's.
        std::string running;
        for (int tries = 0; running != "sleep" && tries < 1000; ++tries) {
            std::this_thread::sleep_for(std::chrono::milliseconds{1});
            std::ifstream(folder + "comm") >> running;
        }
        EXPECT_EQ(running, "sleep");
        return folder + name;
    }
    void TearDown() override {
        if (helper && helper->tool > 0) {
            helper->say(platform::rights::wire::Signal{.tool = helper->tool, .number = SIGKILL});
        }
    }
    std::unique_ptr<RawHelper> helper;
};

TEST_F(ToolOfTheHelper, HasExactlyTheHelpersEnvironment) {
    std::istringstream text(helper->textOf({"/usr/bin/env"}));
    std::set<std::string> lines;
    for (std::string line; std::getline(text, line);) {
        lines.insert(line);
    }
    EXPECT_EQ(lines, (std::set<std::string>{"PATH=/usr/sbin:/usr/bin:/sbin:/bin", "HOME=/root", "USER=root",
                                            "LOGNAME=root", "LANG=C.UTF-8"}));
}

TEST_F(ToolOfTheHelper, HasTheStandardStreamsAndNoOtherDescriptor) {
    std::set<std::string> numbers;
    for (const auto& entry : std::filesystem::directory_iterator(sleepingToolsPath("fd"))) {
        numbers.insert(entry.path().filename());
    }
    EXPECT_EQ(numbers, (std::set<std::string>{"0", "1", "2"}));
}

TEST_F(ToolOfTheHelper, HasNothingToRead) {
    EXPECT_EQ(std::filesystem::read_symlink(sleepingToolsPath("fd/0")), "/dev/null");
}

TEST_F(ToolOfTheHelper, WorksInTheRootFolder) {
    EXPECT_EQ(std::filesystem::read_symlink(sleepingToolsPath("cwd")), "/");
}

TEST_F(ToolOfTheHelper, MakesWhatOthersMayNotWrite) {
    sleepingToolsPath("status");
    EXPECT_EQ(statusLine("Umask"), "0022");
}

TEST_F(ToolOfTheHelper, IsRootAndNobodyElse) {
    sleepingToolsPath("status");
    EXPECT_EQ(statusLine("Uid"), "0\t0\t0\t0");
    EXPECT_EQ(statusLine("Gid"), "0\t0\t0\t0");
}

TEST_F(ToolOfTheHelper, HasEverySignalsDefault) {
    sleepingToolsPath("status");
    EXPECT_EQ(statusLine("SigBlk"), "0000000000000000");
    // Numbers 32 and 33 are the C library's own and cannot be set through it.
    EXPECT_EQ(std::stoull(statusLine("SigIgn"), nullptr, 16) & ~0x180000000ULL, 0U);
}

TEST_F(ToolOfTheHelper, IsNotCutShortBySomebodyElsesLimits) {
    const fakes::TemporaryFolder folder;
    std::ofstream(folder / "from") << std::string(100000, 'x');
    helper->textOf({"/bin/cp", "-f", folder / "from", folder / "to"});
    EXPECT_EQ(std::filesystem::file_size(folder / "to"), 100000U);
}

TEST_F(ToolOfTheHelper, LeavesNoCoreFile) { EXPECT_EQ(helper->textOf({"/bin/bash", "-c", "ulimit -Hc"}), "0\n"); }

TEST(ClosingDescriptors, WorksWhereTheKernelCannotCloseARange) {
    const pid_t child = ::fork();
    if (child == 0) {
        for (int i = 0; i < 50; ++i) {
            static_cast<void>(::open("/dev/null", O_RDONLY));
        }
        platform::rights::closeDescriptorsFrom(3, [](unsigned, unsigned, int) noexcept {
            errno = ENOSYS;
            return -1;
        });
        for (int number = 3; number < 100; ++number) {
            if (::fcntl(number, F_GETFD) >= 0) {
                ::_exit(1);
            }
        }
        ::_exit(::fcntl(STDIN_FILENO, F_GETFD) >= 0 ? 0 : 2);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

}  // namespace
