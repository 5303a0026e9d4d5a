#include "platform/linux/rights/helper/Keeper.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <variant>
#include <vector>

#include "platform/linux/rights/HelperImage.h"
#include "platform/linux/rights/HelperLaunch.h"
#include "platform/posix/Poll.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

using platform::rights::HelperImage;
using platform::rights::HelperLaunch;

// What the command says about itself: the helper's path as it was told, its parent and its session.
constexpr const char* tell = "echo $0 $PPID $(cut -d' ' -f6 /proc/$$/stat)";

struct Told {
    std::string path;
    pid_t parent = -1;
    pid_t session = -1;
};

class Keeper : public testing::Test {
protected:
    // The exit code of the command that is run with the helper's program as its keeper.
    std::optional<int> run(std::vector<std::string> command) {
        command.insert(command.begin(), "/proc/self/fd/3");
        auto started = HelperLaunch::start(command, {}, image.descriptor());
        auto& launch = std::get<HelperLaunch>(started);
        pollfd ended{launch.exitWatch(), POLLIN, 0};
        platform::posix::pollUntil({&ended, 1}, platform::posix::deadlineAfter(std::chrono::seconds{5}));
        return launch.exitCode();
    }

    Told told() const {
        std::ifstream file(folder / "told");
        Told result;
        file >> result.path >> result.parent >> result.session;
        return result;
    }

    HelperImage image;
    fakes::TemporaryFolder folder;
};

TEST_F(Keeper, HasTheExitCodeOfTheCommand) {
    EXPECT_EQ(run({"/bin/sh", "-c", "exit 7"}), 7);
    EXPECT_EQ(run({"/bin/sh", "-c", "kill -9 $$"}), 128 + SIGKILL);
    EXPECT_EQ(run({"/nowhere/sudo", "-S"}), 127);
}

TEST_F(Keeper, IsWhereTheCommandFindsTheHelper) {
    ASSERT_EQ(run({"/bin/sh", "-c", tell + std::string(" > ") + (folder / "told"), "@helper@"}), 0);
    EXPECT_EQ(told().path, "/proc/" + std::to_string(told().parent) + "/exe");
}

TEST_F(Keeper, NamesTheHelperInTheMiddleOfAText) {
    ASSERT_EQ(run({"/bin/sh", "-c", "set -- @helper@; echo $1 $PPID > " + (folder / "told")}), 0);
    EXPECT_EQ(told().path, "/proc/" + std::to_string(told().parent) + "/exe");
}

// The number of a session is not given to another process before the last one has left it.
TEST_F(Keeper, IsTheSessionOfTheCommand) {
    ASSERT_EQ(run({"/bin/sh", "-c", tell + std::string(" > ") + (folder / "told"), "@helper@"}), 0);
    EXPECT_EQ(told().session, told().parent);
}

TEST_F(Keeper, WhenKilledLeavesNothingUnderThePathThatWasGiven) {
    const std::string line = "kill -9 $PPID; while [ -e $0 ]; do sleep 0.01; done; echo gone > " + (folder / "told");
    EXPECT_EQ(run({"/bin/sh", "-c", line, "@helper@"}), 128 + SIGKILL);
    const auto limit = platform::posix::deadlineAfter(std::chrono::seconds{5});
    while (told().path.empty() && std::chrono::steady_clock::now() < limit) {
        ::usleep(10000);
    }
    EXPECT_EQ(told().path, "gone");
}

// Whoever could trace it could put another program in its place.
TEST_F(Keeper, CannotBeTracedByItsOwnUser) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only the superuser can become a user that may trace nothing else";
    }
    constexpr uid_t nobodys = 23451;
    const pid_t user = ::fork();
    if (user == 0) {
        if (::setresgid(nobodys, nobodys, nobodys) != 0 || ::setresuid(nobodys, nobodys, nobodys) != 0 ||
            ::prctl(PR_SET_DUMPABLE, 1) != 0) {
            ::_exit(2);
        }
        const HelperImage own;
        const pid_t keeper = ::fork();
        if (keeper == 0) {
            ::execl(own.path().c_str(), "wickfield-rights", "/bin/sleep", "5", nullptr);
            ::_exit(3);
        }
        bool wasTraced = false;
        // Also in its first moments, but not while it is still this program.
        for (int i = 0; i < 2000; ++i) {
            std::ifstream name("/proc/" + std::to_string(keeper) + "/comm");
            std::string text;
            std::getline(name, text);
            const bool isKeeper = text != "rights_tests";
            wasTraced = wasTraced || (isKeeper && ::ptrace(PTRACE_SEIZE, keeper, nullptr, nullptr) == 0);
        }
        int status = 0;
        const bool isThere = ::waitpid(keeper, &status, WNOHANG) == 0;
        ::kill(keeper, SIGKILL);
        ::_exit(isThere && !wasTraced ? 0 : 1);
    }
    int status = -1;
    ::waitpid(user, &status, 0);
    EXPECT_EQ(status, 0);
}

}  // namespace
