#include "platform/linux/rights/helper/HelperLoop.h"

#include <sys/prctl.h>
#include <sys/resource.h>

#include <filesystem>
#include <fstream>
#include <thread>

#include "platform/posix/ExitWatch.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/rights/RawHelper.h"

namespace {

using tests::RawHelper;
namespace wire = platform::rights::wire;

class Helper : public tests::WithHelper {
protected:
    static std::size_t entriesOf(const std::string& folder) {
        std::size_t count = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(folder)) {
            ++count;
        }
        return count;
    }
    static std::string childrenOf(pid_t process) {
        const auto number = std::to_string(process);
        std::ifstream file("/proc/" + number + "/task/" + number + "/children");
        return {std::istreambuf_iterator<char>(file), {}};
    }
    static bool endsWithin(pid_t process, std::chrono::milliseconds limit) {
        const auto watch = platform::posix::openExitWatch(process);
        pollfd waited{watch.get(), POLLIN, 0};
        return !watch || ::poll(&waited, 1, static_cast<int>(limit.count())) == 1;
    }
};

TEST_F(Helper, SaysThatItIsThereAsRoot) {
    RawHelper helper;
    const auto hello = helper.next<wire::Hello>();
    ASSERT_TRUE(hello);
    EXPECT_EQ(hello->version, wire::version);
    EXPECT_EQ(hello->effectiveUser, 0U);
}

TEST_F(Helper, EndsWhenTheSocketIsClosed) {
    RawHelper helper;
    ASSERT_TRUE(helper.isThere());
    helper.socket.reset();
    EXPECT_EQ(helper.exitCode(), 0);
}

TEST_F(Helper, EndsAtOnceWhenItsInputIsNoSocket) {
    RawHelper helper([] { ::dup2(::open("/dev/null", O_RDWR), STDIN_FILENO); });
    EXPECT_EQ(helper.exitCode(), 1);
}

TEST_F(Helper, EndsAtOnceWithoutRootsRights) {
    constexpr uid_t nobodys = 23451;
    const pid_t user = ::fork();
    if (user == 0) {
        if (::setresuid(nobodys, nobodys, nobodys) != 0 || ::prctl(PR_SET_DUMPABLE, 1) != 0) {
            ::_exit(2);
        }
        RawHelper helper;
        ::_exit(helper.exitCode() == 1 && !helper.isThere() ? 0 : 1);
    }
    int status = -1;
    ::waitpid(user, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST_F(Helper, EndsWhenAnotherProcessThatInheritedTheSocketAsks) {
    const fakes::TemporaryFolder folder;
    RawHelper helper;
    ASSERT_TRUE(helper.isThere());
    const pid_t thief = ::fork();
    if (thief == 0) {
        helper.say(wire::Run{.command = {"/usr/bin/touch", folder / "stolen"}, .wantsOutput = false});
        ::_exit(0);
    }
    ::waitpid(thief, nullptr, 0);
    EXPECT_EQ(helper.exitCode(), 1);
    EXPECT_FALSE(std::filesystem::exists(folder / "stolen"));
}

// The owner's half of a request is not completed by somebody else.
TEST_F(Helper, TakesNoEndOfARequestFromAnotherProcess) {
    const fakes::TemporaryFolder folder;
    RawHelper helper;
    ASSERT_TRUE(helper.isThere());
    const auto bytes = *wire::encode(wire::Run{.command = {"/usr/bin/touch", folder / "stolen"}});
    wire::sendBytes(helper.socket.get(), std::string_view(bytes).substr(0, 10));
    const pid_t thief = ::fork();
    if (thief == 0) {
        wire::sendBytes(helper.socket.get(), std::string_view(bytes).substr(10));
        ::_exit(0);
    }
    ::waitpid(thief, nullptr, 0);
    EXPECT_EQ(helper.exitCode(), 1);
    EXPECT_FALSE(std::filesystem::exists(folder / "stolen"));
}

TEST_F(Helper, EndsWhenItIsSentNonsense) {
    for (const auto& nonsense : {std::string(64, '\xff'), std::string("GET / HTTP/1.0\r\n\r\n"),
                                 std::string("\x02\0\0\0\xff\xff\xff\x7f", 8), std::string(1 << 16, '\0')}) {
        RawHelper helper;
        ASSERT_TRUE(helper.isThere());
        wire::sendBytes(helper.socket.get(), nonsense);
        EXPECT_EQ(helper.exitCode(), 1) << nonsense.substr(0, 16);
    }
}

TEST_F(Helper, EndsWhenItIsSentWhatOnlyItMaySay) {
    for (const wire::Message& message : {wire::Message(wire::Hello{}), wire::Message(wire::Reply{})}) {
        RawHelper helper;
        ASSERT_TRUE(helper.isThere());
        helper.say(message);
        EXPECT_EQ(helper.exitCode(), 1);
    }
}

TEST_F(Helper, DoesNothingForHalfARequest) {
    RawHelper helper;
    ASSERT_TRUE(helper.isThere());
    const auto bytes = *wire::encode(wire::Run{.command = {"/bin/true"}});
    wire::sendBytes(helper.socket.get(), std::string_view(bytes).substr(0, bytes.size() - 1));
    ::shutdown(helper.socket.get(), SHUT_WR);
    EXPECT_EQ(helper.exitCode(), 0);
    EXPECT_FALSE(helper.next<wire::Reply>());
}

TEST_F(Helper, TakesRequestsByteByByteAndManyAtOnce) {
    RawHelper helper;
    ASSERT_TRUE(helper.isThere());
    const auto bytes = *wire::encode(wire::Run{.command = {"/bin/true"}, .wantsOutput = true});
    for (const char byte : bytes) {
        wire::sendBytes(helper.socket.get(), {&byte, 1});
    }
    EXPECT_EQ(helper.next<wire::Reply>()->error, 0);
    wire::sendBytes(helper.socket.get(), bytes + bytes + bytes);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(helper.next<wire::Reply>()->error, 0);
    }
}

TEST_F(Helper, LetsGoOfDescriptorsThatItIsHanded) {
    RawHelper helper;
    ASSERT_TRUE(helper.isThere());
    const auto before = entriesOf("/proc/" + std::to_string(helper.process) + "/fd");
    const auto bytes = *wire::encode(wire::Run{.command = {"/bin/true"}, .wantsOutput = true});
    for (int i = 0; i < 20; ++i) {
        wire::sendBytes(helper.socket.get(), bytes, STDERR_FILENO);
        ASSERT_EQ(helper.next<wire::Reply>()->error, 0);
    }
    // The reply may be here before the helper has closed its own end of the tool's pipe.
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds{2};
    const auto now = [&] { return entriesOf("/proc/" + std::to_string(helper.process) + "/fd"); };
    while (now() != before && std::chrono::steady_clock::now() < limit) {
        std::this_thread::sleep_for(std::chrono::milliseconds{5});
    }
    EXPECT_EQ(now(), before);
}

TEST_F(Helper, EndsWithinASecondOfItsOwnerThoughOthersKeepTheSocket) {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    const pid_t owner = ::fork();
    if (owner == 0) {
        auto* const helper = new RawHelper;  // NOLINT(cppcoreguidelines-owning-memory): left behind on purpose
        const std::array<pid_t, 2> processes{helper->isThere() ? helper->process : -1, ::fork()};
        if (processes[1] == 0) {
            for (;;) {
                ::pause();  // with the socket open
            }
        }
        static_cast<void>(::write(ends[1], processes.data(), sizeof processes));
        ::_exit(0);
    }
    std::array<pid_t, 2> processes{-1, -1};
    ASSERT_EQ(::read(ends[0], processes.data(), sizeof processes), ssize_t{sizeof processes});
    EXPECT_GT(processes[0], 0);
    EXPECT_TRUE(endsWithin(processes[0], std::chrono::seconds{1}));
    ::kill(processes[1], SIGKILL);
    ::waitpid(owner, nullptr, 0);
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST_F(Helper, EndsRatherThanWaitForAnOwnerThatReadsNothing) {
    RawHelper helper;
    ASSERT_TRUE(helper.isThere());
    std::string requests;
    for (int i = 0; i < 512; ++i) {
        requests += *wire::encode(wire::Signal{.tool = 1, .number = 0});
    }
    int error = 0;
    for (int i = 0; i < 1000 && error == 0; ++i) {
        error = wire::sendBytes(helper.socket.get(), requests, -1, wire::WhenFull::wait);
    }
    EXPECT_NE(error, 0);
    EXPECT_TRUE(helper.exitCode().has_value());
}

TEST_F(Helper, LeavesAToolToFinishWhenItEnds) {
    const fakes::TemporaryFolder folder;
    const std::string made = folder / "made";
    RawHelper helper;
    ASSERT_TRUE(helper.isThere());
    ASSERT_EQ(helper.run({"/bin/bash", "-c", "sleep 0.2; echo x > \"$0\"", made}, false), 0);
    const auto watch = platform::posix::openExitWatch(helper.tool);
    helper.socket.reset();
    EXPECT_EQ(helper.exitCode(), 0);
    pollfd waited{watch.get(), POLLIN, 0};
    ::poll(&waited, 1, 5000);
    EXPECT_TRUE(std::filesystem::exists(made));
}

TEST_F(Helper, SignalsTheToolsItStartedAndNoOthers) {
    RawHelper helper;
    ASSERT_TRUE(helper.isThere());
    ASSERT_EQ(helper.run({"/bin/sleep", "60"}), 0);
    const pid_t tool = helper.tool;
    for (const pid_t other : {1, -1, 0, static_cast<int>(::getpid()), static_cast<int>(helper.process), -tool}) {
        helper.say(wire::Signal{.tool = other, .number = 0});
        EXPECT_EQ(helper.next<wire::Reply>()->error, ESRCH) << other;
    }
    helper.say(wire::Signal{.tool = tool, .number = 9999});
    EXPECT_EQ(helper.next<wire::Reply>()->error, EINVAL);
    helper.say(wire::Signal{.tool = tool, .number = SIGKILL});
    EXPECT_EQ(helper.next<wire::Reply>()->error, 0);
    char end = 0;
    EXPECT_EQ(::read(helper.output.get(), &end, 1), 0);
}

TEST_F(Helper, GoesOnWhenNoDescriptorIsLeft) {
    RawHelper helper;
    ASSERT_TRUE(helper.isThere());
    const auto used = entriesOf("/proc/" + std::to_string(helper.process) + "/fd");
    rlimit before{};
    const rlimit tight{used + 1, 4096};
    ASSERT_EQ(::prlimit(helper.process, RLIMIT_NOFILE, &tight, &before), 0);
    EXPECT_EQ(helper.run({"/bin/true"}), EMFILE);
    EXPECT_EQ(helper.run({"/bin/cp", "-f", "/etc/passwd", "/tmp/never-made"}, false), EMFILE);
    ::prlimit(helper.process, RLIMIT_NOFILE, &before, nullptr);
    EXPECT_EQ(helper.run({"/bin/true"}), 0);
}

TEST_F(Helper, SaysThatThereAreTooManyArguments) {
    RawHelper helper;
    ASSERT_TRUE(helper.isThere());
    EXPECT_EQ(helper.run({"/bin/true", std::string(512 << 10U, 'x')}), E2BIG);
    EXPECT_EQ(helper.run({"/bin/true", "x"}), 0);
}

TEST_F(Helper, KeepsNothingOfTenThousandTools) {
    RawHelper helper;
    ASSERT_TRUE(helper.isThere());
    const auto folder = "/proc/" + std::to_string(helper.process) + "/fd";
    const auto ours = entriesOf("/proc/self/fd");
    const auto theirs = entriesOf(folder);
    for (int i = 0; i < 10000; ++i) {
        ASSERT_EQ(helper.run({"/bin/true"}, i % 2 == 0), 0) << i;
        helper.output.reset();
    }
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds{2};
    while (!childrenOf(helper.process).empty() && std::chrono::steady_clock::now() < limit) {
        std::this_thread::sleep_for(std::chrono::milliseconds{5});
    }
    EXPECT_EQ(childrenOf(helper.process), "");
    EXPECT_EQ(entriesOf(folder), theirs);
    EXPECT_EQ(entriesOf("/proc/self/fd"), ours);
}

}  // namespace
