#include <atomic>
#include <cstdlib>
#include <memory>
#include <thread>

#include "tests/lib/BackgroundRuns.h"

namespace {

using namespace std::chrono_literals;
using backgroundruns::ABackgroundRun;
using backgroundruns::patience;
using backgroundruns::Reader;
using backgroundruns::within;
using fakes::ProcessCensus;
using testing::IsEmpty;

class EndingABackgroundRun : public ABackgroundRun {};

TEST_F(EndingABackgroundRun, EndsTheTool) {
    start("echo; exec sleep 60");
    ASSERT_TRUE(reader.getsSomething());
    const auto process = task.theTask();
    const auto begin = Clock::now();
    task.terminateTask();
    EXPECT_TRUE(process->waitUntilExit(10s));
    EXPECT_LT(Clock::now() - begin, 10s);
    EXPECT_TRUE(process->endedBySignal());
}

TEST_F(EndingABackgroundRun, EndsItsSubtasksToo) {
    start("sleep 60 & echo $!; wait");
    ASSERT_TRUE(reader.getsSomething());
    const auto subtask = "/proc/" + std::to_string(std::stol(reader.text()));
    task.terminateTask();
    EXPECT_TRUE(within(patience, [&] {
        const auto status = read(subtask + "/stat");
        return status.empty() || status.find(") Z ") != std::string::npos;
    }));
}

TEST_F(EndingABackgroundRun, ForgetsTheDelegateAndTheTask) {
    start("echo; exec sleep 60");
    ASSERT_TRUE(reader.getsSomething());
    task.terminateAsyncTask();
    EXPECT_EQ(task.delegate(), nullptr);
    EXPECT_EQ(task.theTask(), nullptr);
    EXPECT_FALSE(task.respondsToSelector());
}

TEST_F(EndingABackgroundRun, MeansThatNoCallComesAnyMore) {
    start("while :; do echo text; done");
    ASSERT_TRUE(reader.getsSomething());
    task.terminateTask();
    const auto calls = reader.sizes().size();
    std::this_thread::sleep_for(200ms);
    EXPECT_EQ(reader.sizes().size(), calls);
}

TEST_F(EndingABackgroundRun, FromWithinTheCallbackStopsAtThatPiece) {
    reader.whenCalled = [](const std::string&, KZTaskEx& runner) { runner.terminateTask(); };
    start("while :; do echo text; done");
    ASSERT_TRUE(reader.getsSomething());
    ASSERT_TRUE(hasEnded());
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(reader.sizes().size(), 1U);
}

TEST_F(EndingABackgroundRun, WaitsForACallbackOnAnotherThread) {
    std::atomic<bool> entered = false;
    std::atomic<bool> left = false;
    reader.whenCalled = [&](const std::string&, KZTaskEx&) {
        entered = true;
        std::this_thread::sleep_for(100ms);
        left = true;
    };
    start("echo; exec sleep 60");
    ASSERT_TRUE(within(patience, [&] { return entered.load(); }));
    std::thread([&] {
        task.terminateTask();
        EXPECT_TRUE(left);
    }).join();
}

TEST_F(EndingABackgroundRun, OnTheMainThreadServesACallbackThatNeedsIt) {
    std::atomic<bool> entered = false;
    bool done = false;
    reader.whenCalled = [&](const std::string&, KZTaskEx&) {
        entered = true;
        visitedMainThread.performAndWait([&done] { done = true; });
    };
    start("echo; exec sleep 60");
    ASSERT_TRUE(within(patience, [&] { return entered.load(); }));
    task.terminateTask();
    EXPECT_TRUE(done);
}

TEST_F(EndingABackgroundRun, IsHarmlessWhenThereIsNone) {
    task.terminateTask();
    start("echo");
    ASSERT_TRUE(reader.reachesTheEnd());
    task.terminateTask();
    task.terminateTask();
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(EndingABackgroundRun, BeforeTheToolWasStartedKeepsItFromStarting) {
    auto& tools = pretendTools();
    for (int round = 0; round < 200; ++round) {
        task.asyncDataFromTask("/bin/true", {}, &reader, &Reader::dataArrived, nullptr);
        task.terminateTask();
    }
    EXPECT_TRUE(within(patience, [&] {
        const auto made = tools.made();
        return std::none_of(made.begin(), made.end(), [](const auto& process) { return process->isRunning(); });
    }));
}

TEST_F(EndingABackgroundRun, HappensWhenTheOutputEndsAndTheToolRunsOn) {
    start("echo text; exec >&-; exec sleep 60");
    const auto process = task.theTask();
    ASSERT_TRUE(reader.reachesTheEnd());
    EXPECT_EQ(reader.text(), "text\n");
    EXPECT_TRUE(process->waitUntilExit(10s));
    EXPECT_TRUE(process->endedBySignal());
}

TEST_F(EndingABackgroundRun, LeavesAToolThatIsAboutToEndItsMoment) {
    std::optional<int> status;
    reader.whenCalled = [&](const std::string& data, KZTaskEx& runner) {
        if (data.empty()) {
            status = runner.theTask()->terminationStatus();
        }
    };
    start("exit 7");
    ASSERT_TRUE(reader.reachesTheEnd());
    EXPECT_EQ(status, 7);
}

TEST_F(EndingABackgroundRun, HappensWhenTheNextIsStarted) {
    start("echo first; exec sleep 60");
    ASSERT_TRUE(reader.getsSomething());
    const auto process = task.theTask();
    Reader other;
    task.asyncDataFromTask("/bin/echo", {"second"}, &other, &Reader::dataArrived, nullptr);
    ASSERT_TRUE(other.reachesTheEnd());
    EXPECT_TRUE(process->waitUntilExit(10s));
    EXPECT_EQ(other.text(), "second\n");
    EXPECT_EQ(reader.text(), "first\n");
    task.terminateTask();
}

TEST_F(EndingABackgroundRun, LeavesTheNextAloneThatACallbackStarts) {
    Reader next;
    reader.whenCalled = [&](const std::string& data, KZTaskEx& runner) {
        if (data.empty()) {
            runner.asyncDataFromTask("/bin/echo", {"next"}, &next, &Reader::dataArrived, nullptr);
        }
    };
    start("echo");
    ASSERT_TRUE(next.reachesTheEnd());
    EXPECT_EQ(next.text(), "next\n");
    EXPECT_TRUE(hasEnded());
}

class ABackgroundRunWhoseOwnerGoes : public ABackgroundRun {};

TEST_F(ABackgroundRunWhoseOwnerGoes, EndsItsTool) {
    std::shared_ptr<platform::Process> process;
    {
        KZTaskEx runner;
        start(runner, "echo; exec sleep 60");
        ASSERT_TRUE(reader.getsSomething());
        process = runner.theTask();
    }
    EXPECT_TRUE(process->waitUntilExit(10s));
    EXPECT_TRUE(process->endedBySignal());
}

TEST_F(ABackgroundRunWhoseOwnerGoes, CallsNobodyAnyMore) {
    for (int round = 0; round < 50; ++round) {
        auto delegate = std::make_unique<Reader>();
        auto runner = std::make_unique<KZTaskEx>();
        runner->asyncDataFromTask("/bin/bash", script("while :; do echo text; done"), delegate.get(),
                                  &Reader::dataArrived, nullptr);
        if (round % 2 == 0) {
            ASSERT_TRUE(delegate->getsSomething());
        }
        runner.reset();
        delegate.reset();  // a sanitizer sees whoever still uses it
    }
}

TEST_F(ABackgroundRunWhoseOwnerGoes, MayLoseItWithinTheCallback) {
    auto runner = std::make_unique<KZTaskEx>();
    auto* const started = runner.get();
    std::atomic<bool> gone = false;
    reader.whenCalled = [&](const std::string&, KZTaskEx&) {
        runner.reset();
        gone = true;
    };
    start(*started, "while :; do echo text; done");
    EXPECT_TRUE(within(patience, [&] { return gone.load(); }));
    std::this_thread::sleep_for(50ms);
    EXPECT_EQ(reader.sizes().size(), 1U);
}

// The owner goes after all static objects that were made along with its first run; a sanitizer sees whoever still uses
// one.
void endTheProgramWithTwoRuns() {
    platform::setHost(platform::linux_host::services());
    static KZTaskEx* runner = nullptr;
    (void)std::atexit([] { delete runner; });
    runner = new KZTaskEx;
    runner->asyncDataFromTask("/bin/sleep", {"60"}, new Reader, &Reader::dataArrived, nullptr);
    {
        KZTaskEx other;
        other.asyncDataFromTask("/bin/sleep", {"60"}, new Reader, &Reader::dataArrived, nullptr);
    }
    within(1s, [] { return ProcessCensus::take().threads <= 2; });  // this one and the first reader
    std::exit(0);  // NOLINT(concurrency-mt-unsafe): what happens then is the question
}

TEST(ABackgroundRunWhoseProgramEnds, MayHaveAnOwnerThatGoesLast) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(endTheProgramWithTwoRuns(), testing::ExitedWithCode(0), "");
}

}  // namespace
