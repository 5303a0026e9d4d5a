// What every launcher keeps to: the one that only pretends and the one that runs tools.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "platform/posix/ProcessLauncher.h"
#include "tests/fakes/FakeProcesses.h"

namespace {

using namespace std::chrono_literals;
using platform::Process;
using platform::ProcessOptions;

// The same few tools from both: what they are asked to do, and what that is made of.
class Pretended {
public:
    std::shared_ptr<Process> make(const fakes::FakeTool& tool) {
        m_processes.tools["tool"] = tool;
        return m_processes.make(options("tool"));
    }
    std::shared_ptr<Process> missing() {
        return make({.launchFailure = platform::Error{2, "launch path not accessible: tool"}});
    }

protected:
    static ProcessOptions options(const std::string& path) {
        ProcessOptions options;
        options.path = path;
        options.output = options.error = ProcessOptions::Output::pipe;
        return options;
    }

private:
    fakes::FakeProcesses m_processes;
};

class Real : public Pretended {
public:
    std::shared_ptr<Process> make(const fakes::FakeTool& tool) {
        std::string script = "printf '" + tool.output + "'; printf '" + tool.error + "' >&2;";
        if (tool.ignoresTerminate) {
            script += "trap '' TERM;";
        }
        if (tool.leavesStreamsOpen) {
            script += "sleep 2 &";
        }
        script +=
            tool.runsUntilEnded ? "printf ready; while :; do sleep 0.05; done" : "exit " + std::to_string(tool.status);
        auto all = options("/bin/bash");
        all.arguments = {"-c", script};
        return m_launcher.make(all);
    }
    std::shared_ptr<Process> missing() { return m_launcher.make(options("/no/such/tool")); }

private:
    platform::posix::ProcessLauncher m_launcher;
};

template <typename Kind>
class ALauncher : public testing::Test {
protected:
    std::shared_ptr<Process> launched(const fakes::FakeTool& tool) {
        auto process = kind.make(tool);
        EXPECT_FALSE(process->launch());
        if (tool.ignoresTerminate) {  // until the script is that far
            std::string output;
            std::string error;
            while (output.find("ready") == std::string::npos &&
                   process->readAvailable(output, error, 1s) == Process::Chunk::output) {
            }
        }
        return process;
    }

    Kind kind;
};

using Kinds = testing::Types<Pretended, Real>;
TYPED_TEST_SUITE(ALauncher, Kinds);

TYPED_TEST(ALauncher, GivesAProcessThatDoesNotRunBeforeItsLaunch) {
    const auto process = this->kind.make({});
    EXPECT_FALSE(process->isRunning());
    EXPECT_EQ(process->terminationStatus(), 0);
    process->waitUntilExit();  // returns
    EXPECT_TRUE(process->waitUntilExit(1ms));
}

TYPED_TEST(ALauncher, ReportsAToolThatIsMissingAtTheLaunch) {
    const auto process = this->kind.missing();
    const auto failure = process->launch();
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->description.substr(0, 26), "launch path not accessible");
    EXPECT_FALSE(process->isRunning());
}

TYPED_TEST(ALauncher, RefusesASecondLaunch) {
    const auto process = this->launched({});
    EXPECT_TRUE(process->launch());
}

TYPED_TEST(ALauncher, GivesTheExitStatus) {
    const auto process = this->launched({.status = 7});
    process->waitUntilExit();
    EXPECT_EQ(process->terminationStatus(), 7);
    EXPECT_FALSE(process->endedBySignal());
    EXPECT_FALSE(process->isRunning());
}

TYPED_TEST(ALauncher, SaysThatAToolRuns) {
    const auto process = this->launched({.runsUntilEnded = true});
    EXPECT_TRUE(process->isRunning());
    EXPECT_EQ(process->terminationStatus(), 0);
    EXPECT_FALSE(process->waitUntilExit(20ms));
    process->kill();
}

TYPED_TEST(ALauncher, EndsAToolThatIsAskedTo) {
    const auto process = this->launched({.runsUntilEnded = true});
    process->terminate();
    EXPECT_TRUE(process->waitUntilExit(10s));
    EXPECT_EQ(process->terminationStatus(), 15);
    EXPECT_TRUE(process->endedBySignal());
}

TYPED_TEST(ALauncher, KillsAToolThatDoesNotListen) {
    const auto process = this->launched({.runsUntilEnded = true, .ignoresTerminate = true});
    process->terminate();
    EXPECT_FALSE(process->waitUntilExit(100ms));
    process->kill();
    EXPECT_TRUE(process->waitUntilExit(10s));
    EXPECT_EQ(process->terminationStatus(), 9);
}

TYPED_TEST(ALauncher, LeavesTheStatusOfAToolThatHadEnded) {
    const auto process = this->launched({.status = 3});
    process->waitUntilExit();
    process->terminate();
    process->kill();
    EXPECT_EQ(process->terminationStatus(), 3);
}

TYPED_TEST(ALauncher, GivesBothStreamsAndThenTheirEnd) {
    const auto process = this->launched({.output = "out", .error = "error"});
    std::string output;
    std::string error;
    while (process->readAvailable(output, error, std::nullopt) != Process::Chunk::endOfStreams) {
    }
    EXPECT_EQ(output, "out");
    EXPECT_EQ(error, "error");
    EXPECT_EQ(process->readAvailable(output, error, std::nullopt), Process::Chunk::endOfStreams);
}

TYPED_TEST(ALauncher, TimesOutWhileASubtaskHoldsTheStreams) {
    const auto process = this->launched({.leavesStreamsOpen = true});
    process->waitUntilExit();
    std::string output;
    std::string error;
    EXPECT_EQ(process->readAvailable(output, error, 20ms), Process::Chunk::timedOut);
}

TYPED_TEST(ALauncher, EndsTheStreamsWhenTheyAreClosed) {
    const auto process = this->launched({.runsUntilEnded = true});
    process->closeReadEnds();
    std::string output;
    std::string error;
    EXPECT_EQ(process->readAvailable(output, error, std::nullopt), Process::Chunk::endOfStreams);
    process->kill();
}

class ARealTool : public testing::Test {
protected:
    static std::shared_ptr<Process> launched(const ProcessOptions& options) {
        auto process = platform::posix::ProcessLauncher().make(options);
        EXPECT_FALSE(process->launch());
        process->waitUntilExit();
        return process;
    }
};

TEST_F(ARealTool, WritesToTheProgramsOwnStreamsWhenToldSo) {
    ProcessOptions options;
    options.path = "/bin/bash";
    options.arguments = {"-c", "echo out; echo error >&2"};
    options.output = options.error = ProcessOptions::Output::inherit;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    launched(options);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "out\n");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "error\n");
}

TEST_F(ARealTool, GivesTheLowestEightBitsOfItsExitCode) {
    ProcessOptions options;
    options.path = "/usr/bin/awk";
    options.arguments = {"BEGIN { exit 300 }"};
    const auto process = launched(options);
    EXPECT_EQ(process->terminationStatus(), 44);
    EXPECT_EQ(process->terminationStatus(), 44);
    EXPECT_FALSE(process->endedBySignal());
}

}  // namespace
