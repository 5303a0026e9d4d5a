#include "platform/posix/ChildProcess.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <chrono>
#include <filesystem>
#include <thread>
#include <vector>

#include "platform/posix/ProcessLauncher.h"
#include "tests/fakes/ProcessCensus.h"
#include "tests/posix/ScriptFile.h"

namespace {

using namespace std::chrono_literals;
using fakes::ProcessCensus;
using platform::Process;
using platform::ProcessOptions;
using Clock = std::chrono::steady_clock;

std::shared_ptr<Process> bash(const std::string& script) {
    platform::posix::ProcessLauncher launcher;
    ProcessOptions options;
    options.path = "/bin/bash";
    options.arguments = {"-c", script};
    options.output = ProcessOptions::Output::pipe;
    return launcher.make(options);
}

std::shared_ptr<Process> launched(const std::string& script) {
    auto process = bash(script);
    const auto failure = process->launch();
    EXPECT_FALSE(failure) << failure->description;
    return process;
}

std::string outputOf(Process& process) {
    std::string output;
    std::string error;
    while (process.readAvailable(output, error, std::nullopt) != Process::Chunk::endOfStreams) {
    }
    return output;
}

// Reads until the text has come, so that the tool is known to be that far.
void readUntil(Process& process, const std::string& text) {
    std::string output;
    std::string error;
    while (output.find(text) == std::string::npos &&
           process.readAvailable(output, error, 10s) == Process::Chunk::output) {
    }
    ASSERT_NE(output.find(text), std::string::npos) << output;
}

bool exists(pid_t process) { return ::kill(process, 0) == 0; }

bool isZombieOrGone(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    std::getline(file, line);
    return line.empty() || line.find(") Z") != std::string::npos;
}

bool goneWithin(pid_t process, std::chrono::milliseconds limit) {
    const auto deadline = Clock::now() + limit;
    while (!isZombieOrGone(process) && Clock::now() < deadline) {
        std::this_thread::sleep_for(2ms);
    }
    return isZombieOrGone(process);
}

TEST(ChildProcess, GivesTheExitCodeOfTheTool) {
    const auto process = launched("exit 37");
    process->waitUntilExit();
    EXPECT_EQ(process->terminationStatus(), 37);
    EXPECT_FALSE(process->endedBySignal());
}

TEST(ChildProcess, GivesTheNumberOfTheSignalThatEndedTheTool) {
    const auto process = launched("kill -SEGV $$");
    process->waitUntilExit();
    EXPECT_EQ(process->terminationStatus(), SIGSEGV);
    EXPECT_TRUE(process->endedBySignal());
}

TEST(ChildProcess, IsReapedByTheWait) {
    const auto process = launched("echo $$");
    const pid_t pid = std::stoi(outputOf(*process));
    process->waitUntilExit();
    EXPECT_FALSE(exists(pid));
}

TEST(ChildProcess, IsReapedByALookAtItsState) {
    const auto process = launched("echo $$");
    const pid_t pid = std::stoi(outputOf(*process));
    while (process->isRunning()) {
        std::this_thread::yield();
    }
    EXPECT_FALSE(exists(pid));
}

TEST(ChildProcess, IsReapedWhenItIsLetGoWhileItRuns) {
    const auto before = ProcessCensus::take();
    { const auto process = launched("sleep 0.2"); }
    EXPECT_EQ(ProcessCensus::takeUntil(before), before);
}

TEST(ChildProcess, GoesOnRunningWhenItIsLetGo) {
    const fakes::TemporaryFolder folder;
    {
        const auto process = launched("sleep 0.1; : > '" + folder.path() + "/done'");
        process->closeReadEnds();
    }
    const auto deadline = Clock::now() + 5s;
    while (!std::filesystem::exists(folder / "done") && Clock::now() < deadline) {
        std::this_thread::sleep_for(5ms);
    }
    EXPECT_TRUE(std::filesystem::exists(folder / "done"));
}

TEST(ChildProcess, ManyThatAreLetGoLeaveNothingBehind) {
    const auto before = ProcessCensus::take();
    for (int run = 0; run < 300; ++run) {
        launched("exit 3");
    }
    EXPECT_EQ(ProcessCensus::takeUntil(before, 20s), before);
}

TEST(ChildProcess, ThousandRunsLeaveNoDescriptorThreadOrZombie) {
    const auto before = ProcessCensus::take();
    platform::posix::ProcessLauncher launcher;
    for (int run = 0; run < 1000; ++run) {
        ProcessOptions options;
        options.path = "/bin/true";
        options.output = options.error = ProcessOptions::Output::pipe;
        options.input = ProcessOptions::Input::pipe;
        const auto process = launcher.make(options);
        ASSERT_FALSE(process->launch());
        outputOf(*process);
        EXPECT_TRUE(process->waitUntilExit(10s));
    }
    auto after = ProcessCensus::take();
    --after.descriptors;  // the launcher's null device
    EXPECT_EQ(after, before);
}

TEST(ChildProcess, ALimitedWaitReturnsWhenTheToolEnds) {
    const auto process = launched("sleep 0.1");
    const auto start = Clock::now();
    EXPECT_TRUE(process->waitUntilExit(10s));
    EXPECT_LT(Clock::now() - start, 5s);
}

TEST(ChildProcess, ALimitedWaitReturnsWhenTheTimeHasPassed) {
    const auto process = launched("sleep 30");
    const auto start = Clock::now();
    EXPECT_FALSE(process->waitUntilExit(50ms));
    EXPECT_GE(Clock::now() - start, 50ms);
    process->kill();
}

TEST(ChildProcess, AWaitOfNoTimeOnlyLooks) {
    const auto process = launched("sleep 30");
    EXPECT_FALSE(process->waitUntilExit(0ms));
    EXPECT_FALSE(process->waitUntilExit(-5ms));
    process->kill();
}

TEST(ChildProcess, ALimitBeyondTheClockIsForEver) {
    const auto process = launched("sleep 0.05");
    EXPECT_TRUE(process->waitUntilExit(std::chrono::milliseconds::max()));
}

TEST(ChildProcess, SeveralThreadsMayWaitForOneTool) {
    const auto process = launched("sleep 0.2; exit 4");
    std::vector<int> statuses(8);
    {
        std::vector<std::jthread> threads;
        for (std::size_t index = 0; index < statuses.size(); ++index) {
            threads.emplace_back([&, index] {
                if (index % 2 == 0) {
                    process->waitUntilExit();
                } else {
                    process->waitUntilExit(10s);
                }
                statuses[index] = process->terminationStatus();
            });
        }
    }
    EXPECT_EQ(statuses, std::vector<int>(8, 4));
}

TEST(ChildProcess, TerminateEndsTheToolAndItsSubtasks) {
    const auto process = launched("sleep 100 & echo $!; wait");
    std::string output;
    std::string error;
    process->readAvailable(output, error, 10s);
    const pid_t subtask = std::stoi(output);
    process->terminate();
    EXPECT_TRUE(process->waitUntilExit(10s));
    EXPECT_TRUE(goneWithin(subtask, 5s));
    EXPECT_EQ(process->terminationStatus(), SIGTERM);
}

TEST(ChildProcess, AToolThatLeftItsGroupIsReachedAllTheSame) {
    if (!std::filesystem::exists("/usr/bin/perl")) {
        GTEST_SKIP() << "no tool here can change its process group";
    }
    const std::string leave = "setpgrp(0, getpgrp(getppid)) or die; $| = 1; print qq(left\\n); sleep 100";
    for (const auto end : {&Process::terminate, &Process::kill}) {
        const auto process = launched("sleep 100 & exec perl -e '" + leave + "'");
        readUntil(*process, "left");
        ((*process).*end)();
        ASSERT_TRUE(process->waitUntilExit(5s));
    }
}

TEST(ChildProcess, KillEndsAToolThatIgnoresTheRequest) {
    const auto process = launched("trap '' TERM; echo ready; while :; do sleep 0.05; done");
    readUntil(*process, "ready");
    process->terminate();
    EXPECT_FALSE(process->waitUntilExit(200ms));
    process->kill();
    EXPECT_TRUE(process->waitUntilExit(10s));
    EXPECT_EQ(process->terminationStatus(), SIGKILL);
}

TEST(ChildProcess, KillReachesASubtaskThatOutlivedTheRequest) {
    const auto process =
        launched("(trap '' TERM; echo $BASHPID; while :; do sleep 0.05; done) & trap 'exit 0' TERM; wait");
    std::string output;
    std::string error;
    process->readAvailable(output, error, 10s);
    const pid_t subtask = std::stoi(output);
    process->terminate();
    ASSERT_TRUE(process->waitUntilExit(10s));
    ASSERT_FALSE(isZombieOrGone(subtask));
    process->kill();
    EXPECT_TRUE(goneWithin(subtask, 5s));
}

TEST(ChildProcess, AToolThatWasAskedToEndIsReapedByKill) {
    const auto process = launched("echo $$; exec sleep 100");
    std::string output;
    std::string error;
    process->readAvailable(output, error, 10s);
    process->terminate();
    process->waitUntilExit();
    process->kill();
    EXPECT_FALSE(exists(std::stoi(output)));
}

TEST(ChildProcess, AToolThatWasAskedToEndIsReapedWhenItIsLetGo) {
    const auto before = ProcessCensus::take();
    {
        const auto process = launched("exec sleep 100");
        process->terminate();
        process->waitUntilExit();
    }
    EXPECT_EQ(ProcessCensus::takeUntil(before), before);
}

TEST(ChildProcess, ASubtaskIsLeftAloneWhenTheToolHadEndedBeforeTheRequest) {
    const auto process = launched("sleep 100 & echo $!");
    std::string output;
    std::string error;
    process->readAvailable(output, error, 10s);
    const pid_t subtask = std::stoi(output);
    ASSERT_TRUE(process->waitUntilExit(10s));
    process->terminate();
    process->kill();
    EXPECT_FALSE(isZombieOrGone(subtask));
    ::kill(subtask, SIGKILL);
}

TEST(ChildProcess, IsNoMemberOfTheCallersGroup) {
    const auto process = launched("ps -o pgid= -p $$ 2>/dev/null || cut -d' ' -f5 /proc/$$/stat");
    EXPECT_NE(std::stoi(outputOf(*process)), ::getpgrp());
}

TEST(ChildProcess, CannotBeLaunchedTwice) {
    const auto process = launched("exit 0");
    EXPECT_TRUE(process->launch());
}

TEST(ChildProcess, NoDescriptorsLeftIsAFailureOfTheLaunch) {
    const auto process = bash("exit 0");
    std::vector<platform::posix::Descriptor> all;
    for (int fd = ::dup(0); fd >= 0; fd = ::dup(0)) {
        all.emplace_back(fd);
        if (all.size() > 100000) {
            GTEST_SKIP() << "the limit of open files is too high to be reached";
        }
    }
    const auto failure = process->launch();
    all.clear();
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, EMFILE);
}

TEST(ChildProcess, AChildThatSomebodyElseReapedCountsAsEndedWithoutAStatus) {
    const auto process = launched("echo $$; sleep 0.1");
    std::string output;
    std::string error;
    process->readAvailable(output, error, 10s);
    ::waitpid(std::stoi(output), nullptr, 0);
    process->waitUntilExit();
    EXPECT_FALSE(process->isRunning());
    EXPECT_EQ(process->terminationStatus(), -1);
}

TEST(ChildProcess, ItsInputIsOpenAndEmpty) {
    platform::posix::ProcessLauncher launcher;
    ProcessOptions options;
    options.path = "/bin/bash";
    options.arguments = {"-c", "read -t 0.2 line; echo $?"};  // above 128: nothing came in the time
    options.input = ProcessOptions::Input::pipe;
    options.output = ProcessOptions::Output::pipe;
    const auto process = launcher.make(options);
    ASSERT_FALSE(process->launch());
    EXPECT_GT(std::stoi(outputOf(*process)), 128);
}

TEST(ChildProcess, ANullInputEndsAtOnce) {
    const auto process = launched("read line; echo $?");
    EXPECT_EQ(outputOf(*process), "1\n");
}

}  // namespace
