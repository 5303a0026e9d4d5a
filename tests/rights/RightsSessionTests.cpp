#include "platform/linux/rights/RightsSession.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include "platform/linux/rights/HelperImage.h"
#include "platform/linux/rights/HelperLaunch.h"
#include "platform/posix/Poll.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

using platform::rights::HelperImage;
using platform::rights::HelperLaunch;
using platform::rights::RightsSession;

// The superuser needs nobody's leave to start the helper.
class Session : public testing::Test {
protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "only the superuser can start the helper without asking";
        }
        auto started = HelperLaunch::start({image.path()});
        ASSERT_TRUE(std::holds_alternative<HelperLaunch>(started));
        auto& launch = std::get<HelperLaunch>(started);
        std::array<pollfd, 1> watched{{{launch.socket(), POLLIN, 0}}};
        platform::posix::pollUntil(watched, platform::posix::deadlineAfter(std::chrono::seconds{10}));
        ASSERT_EQ(launch.progress(), HelperLaunch::Progress::running);
        session = launch.takeSession();
    }

    std::string outputOf(const std::string& tool, const std::vector<std::string>& arguments) {
        const auto started = session->start(tool, arguments, true);
        std::string output;
        std::array<char, 4096> buffer{};
        for (ssize_t got = 0; (got = ::read(started.output.get(), buffer.data(), buffer.size())) > 0;) {
            output.append(buffer.data(), static_cast<std::size_t>(got));
        }
        return output;
    }

    HelperImage image;
    std::unique_ptr<RightsSession> session;
    fakes::TemporaryFolder folder;
};

TEST_F(Session, RunsAToolAsRoot) { EXPECT_EQ(outputOf("/usr/bin/id", {"-u"}), "0\n"); }

TEST_F(Session, WaitsForTheToolToCloseItsOutput) {
    const std::string made = folder.path() + "/made";
    ASSERT_EQ(session->run("/bin/bash", {"-c", "sleep 0.3; echo x > \"$0\"", made}, true), 0);
    EXPECT_TRUE(std::ifstream(made).good());
}

TEST_F(Session, SaysWhyAToolCouldNotBeStarted) {
    EXPECT_EQ(session->run("/no/such/tool", {}, false), ENOENT);
    EXPECT_EQ(session->run("/etc/passwd", {}, false), EACCES);
}

TEST_F(Session, LooksNothingUp) { EXPECT_EQ(session->run("id", {}, false), EINVAL); }

TEST_F(Session, ServesAThousandRequests) {
    int failures = 0;
    for (int i = 0; i < 1000; ++i) {
        failures += session->run("/bin/true", {}, i % 2 == 0) != 0 ? 1 : 0;
    }
    EXPECT_EQ(failures, 0);
}

TEST_F(Session, ServesAHundredRequestsAtOnce) {
    std::vector<std::thread> threads;
    std::array<int, 100> errors{};
    for (auto& error : errors) {
        threads.emplace_back([this, &error] { error = session->run("/bin/true", {}, true); });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(std::count(errors.begin(), errors.end(), 0), 100);
}

TEST_F(Session, EndsToolsOfItsOwnOnly) {
    const auto started = session->start("/bin/sleep", {"60"}, true);
    EXPECT_EQ(session->sendSignal(::getpid(), 0), ESRCH);
    EXPECT_EQ(session->sendSignal(started.tool, SIGKILL), 0);
    char end = 0;
    EXPECT_EQ(::read(started.output.get(), &end, 1), 0);
}

}  // namespace
