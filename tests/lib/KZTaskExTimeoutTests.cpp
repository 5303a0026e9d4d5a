#include <atomic>
#include <csignal>
#include <limits>
#include <thread>

#include "lib/KZTaskEx/TimedRun.h"
#include "lib/KZTaskEx/Timers.h"
#include "tests/fakes/ProcessCensus.h"
#include "tests/lib/TaskFixture.h"

namespace {

using namespace std::chrono_literals;
using fakes::ProcessCensus;
using testing::ElementsAre;
using testing::IsEmpty;

class ATimeOut : public TaskFixture {
protected:
    static bool isZombieOrGone(const std::string& pid) {
        const std::string stat = read("/proc/" + pid + "/stat");
        return stat.empty() || stat.find(") Z") != std::string::npos;
    }
    static bool goneWithin(const std::string& pid, std::chrono::milliseconds limit) {
        const auto deadline = Clock::now() + limit;
        while (!isZombieOrGone(pid) && Clock::now() < deadline) {
            std::this_thread::sleep_for(5ms);
        }
        return isZombieOrGone(pid);
    }
    // The tools of other tests that were ended are forgotten after the grace time.
    static ProcessCensus censusWithoutEndedTools() {
        while (kz::Timers::shared().waiting() > 0) {
            std::this_thread::sleep_for(10ms);
        }
        return ProcessCensus::take();
    }
    static std::string trimmed(const std::string& text) { return text.substr(0, text.find('\n')); }
};

TEST_F(ATimeOut, EndsTheToolAndSaysSo) {
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/sleep", {"60"}, Seconds{1.0}), SIGTERM);
    EXPECT_THAT(newLogEntries(), ElementsAre("Task /bin/sleep timed out. Terminating..."));
    EXPECT_EQ(newPrint(), "Task /bin/sleep timed out. Terminating...\n");
}

TEST_F(ATimeOut, LeavesAToolThatIsQuickEnough) {
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/bash", script("sleep 0.1; exit 4"), Seconds{60.0}), 4);
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(ATimeOut, BelowOneSecondEndsTheToolRightAfterItsLaunch) {
    const auto start = Clock::now();
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/sleep", {"60"}, Seconds{0.5}), SIGTERM);
    EXPECT_LT(Clock::now() - start, 450ms);
}

TEST_F(ATimeOut, IsTruncatedToWholeSeconds) {
    const auto start = Clock::now();
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/sleep", {"60"}, Seconds{1.9}), SIGTERM);
    EXPECT_GE(Clock::now() - start, 1s);
    EXPECT_LT(Clock::now() - start, 1800ms);
}

TEST_F(ATimeOut, ThatIsNegativeOrNoNumberEndsTheToolAtOnce) {
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/sleep", {"60"}, Seconds{-5.0}), SIGTERM);
    EXPECT_EQ(
        KZTaskEx::terminationCodeFromTask("/bin/sleep", {"60"}, Seconds{std::numeric_limits<double>::quiet_NaN()}),
        SIGTERM);
}

TEST_F(ATimeOut, ThatIsEndlessNeverComes) {
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/bash", script("sleep 0.1; exit 4"),
                                                Seconds{std::numeric_limits<double>::infinity()}),
              4);
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/bash", script("sleep 0.1; exit 4"), Seconds{1e300}), 4);
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/bash", script("sleep 0.1; exit 4"), Seconds{1e10}), 4);
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/bash", script("sleep 0.1; exit 4"), Seconds{3e10}), 4);
}

TEST_F(ATimeOut, ReachesTheSubtasks) {
    KZTaskEx::terminationCodeFromTask("/bin/bash", script("sleep 60 & echo $! > '" + disk.path() + "/pid'; wait"),
                                      Seconds{1.0});
    EXPECT_TRUE(goneWithin(trimmed(read(disk / "pid")), 3s));
}

TEST_F(ATimeOut, KillsAToolThatIgnoresTheRequestAfterTheGraceTime) {
    const auto start = Clock::now();
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/bash", script("trap '' TERM; while :; do sleep 0.1; done"),
                                                Seconds{1.0}),
              SIGKILL);
    EXPECT_GE(Clock::now() - start, 1s + kz::TimedRun::graceTime);
}

TEST_F(ATimeOut, KillsASubtaskThatIgnoresTheRequestAfterTheGraceTime) {
    const auto start = Clock::now();
    KZTaskEx::terminationCodeFromTask(
        "/bin/bash", script("(trap '' TERM; while :; do sleep 0.1; done) & echo $! > '" + disk.path() + "/pid'; wait"),
        Seconds{1.0});
    EXPECT_LT(Clock::now() - start, 1s + kz::TimedRun::graceTime);
    const auto pid = trimmed(read(disk / "pid"));
    EXPECT_FALSE(isZombieOrGone(pid));
    EXPECT_TRUE(goneWithin(pid, kz::TimedRun::graceTime + 5s));
}

TEST_F(ATimeOut, OfACaptureGivesWhatWasReadSoFar) {
    EXPECT_EQ(KZTaskEx::dataFromTask("/bin/bash", script("echo early; sleep 60; echo late"), Seconds{1.0}), "early\n");
    EXPECT_THAT(newLogEntries(), ElementsAre("Task /bin/bash timed out. Terminating..."));
}

TEST_F(ATimeOut, EndsACaptureWhoseOutputASubtaskKeepsOpen) {
    const auto start = Clock::now();
    EXPECT_EQ(KZTaskEx::dataFromTask("/bin/bash", script("sleep 8 & echo out; echo $! > '" + disk.path() + "/pid'"),
                                     Seconds{1.0}),
              "out\n");
    EXPECT_LT(Clock::now() - start, 6s);
    EXPECT_THAT(newLogEntries(), IsEmpty());  // the tool itself was in time
    EXPECT_FALSE(isZombieOrGone(trimmed(read(disk / "pid"))));
}

TEST_F(ATimeOut, EndsACaptureThatASubtaskFloods) {
    const auto start = Clock::now();
    const auto data = KZTaskEx::dataFromTask("/bin/bash", script("(timeout 6 yes) & echo out"), Seconds{1.0});
    EXPECT_LT(Clock::now() - start, 5s);
    ASSERT_TRUE(data);
    EXPECT_FALSE(data->empty());
}

TEST_F(ATimeOut, OfARunThatCapturesNothingNeverEndsTheTool) {
    KZTaskEx::runTask("/bin/bash", script("sleep 1.2; echo done > '" + disk.path() + "/done'"), Seconds{0.0});
    EXPECT_EQ(read(disk / "done"), "done\n");
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(ATimeOut, LetsTheMainThreadGoOnMeanwhile) {
    std::atomic<int> served = 0;
    std::jthread other([this, &served] {
        for (int piece = 0; piece < 10; ++piece) {
            mainThread.performAndWait([&served] { ++served; });
        }
    });
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/sleep", {"1"}, Seconds{60.0}), 0);
    EXPECT_EQ(served, 10);
    while (served < 10) {  // not to hang when it was not
        mainThread.runNextEvent(10ms);
    }
}

TEST_F(ATimeOut, LetsTheMainThreadGoOnDuringACapture) {
    int served = 0;
    mainThread.perform([&served] { ++served; });
    EXPECT_EQ(KZTaskEx::dataFromTask(
                  "/bin/bash", script("while ((i++ < 100)); do echo $i; sleep 0.002; done | tail -1"), Seconds{60.0}),
              "100\n");
    EXPECT_EQ(served, 1);
}

TEST_F(ATimeOut, OfAnotherThreadsRunIsCarriedOutByTheMainThread) {
    std::atomic<int> code = 0;
    std::jthread worker([&code] { code = KZTaskEx::terminationCodeFromTask("/bin/sleep", {"60"}, Seconds{0.0}); });
    while (code == 0) {
        mainThread.runNextEvent(10ms);
    }
    EXPECT_EQ(code, SIGTERM);
}

TEST_F(ATimeOut, ThatTheMainThreadServesTooLateFindsNoTask) {
    std::atomic<int> code = 0;
    std::jthread([&code] {
        code = KZTaskEx::terminationCodeFromTask("/bin/bash", script("sleep 0.3; exit 7"), Seconds{0.0});
    }).join();
    mainThread.serve();
    EXPECT_EQ(code, 7);
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(ATimeOut, OfAnotherThreadsCaptureIsCarriedOutByTheMainThread) {
    std::atomic<bool> done = false;
    std::optional<std::string> data;
    std::jthread worker([&] {
        data = KZTaskEx::dataFromTask("/bin/bash", script("echo early; sleep 60"), Seconds{1.0});
        done = true;
    });
    while (!done) {
        mainThread.runNextEvent(10ms);
    }
    worker.join();
    EXPECT_EQ(data, "early\n");
}

TEST_F(ATimeOut, OfAToolThatCannotBeStartedNeverComes) {
    const auto file = add("file", "#!/no/such/interpreter\n");
    const auto before = kz::Timers::shared().waiting();
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask(file, {}, Seconds{1.0}), -1);
    EXPECT_EQ(kz::Timers::shared().waiting(), before);
}

TEST_F(ATimeOut, OfARunThatHasEndedIsForgotten) {
    const auto before = kz::Timers::shared().waiting();
    for (int run = 0; run < 20; ++run) {
        KZTaskEx::terminationCodeFromTask("/bin/true", {}, Seconds{60.0});
    }
    EXPECT_EQ(kz::Timers::shared().waiting(), before);
}

TEST_F(ATimeOut, ThousandTimedRunsLeaveNoDescriptorThreadOrZombie) {
    KZTaskEx::runTask("/bin/true", {}, Seconds{60.0});  // starts the timers' thread
    const auto before = censusWithoutEndedTools();
    for (int run = 0; run < 1000; ++run) {
        if (run % 2 == 0) {
            KZTaskEx::terminationCodeFromTask("/bin/true", {}, Seconds{60.0});
        } else {
            KZTaskEx::dataFromTask("/bin/true", {}, Seconds{60.0});
        }
    }
    EXPECT_EQ(ProcessCensus::takeUntil(before), before);
}

TEST_F(ATimeOut, ThousandRunsThatAreNotWaitedForLeaveNothing) {
    const auto before = censusWithoutEndedTools();
    for (int run = 0; run < 1000; ++run) {
        KZTaskEx::runTaskAndReturn("/bin/true", {});
    }
    EXPECT_EQ(ProcessCensus::takeUntil(before, 30s), before);
}

}  // namespace
