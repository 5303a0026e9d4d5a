#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <stdexcept>

#include "tests/fakes/FakeUncaughtExceptions.h"
#include "tests/lib/LogFixture.h"

namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class SharedLog : public LogFixture {};

TEST_F(SharedLog, IsOneForAllThreads) {
    std::vector<KZLog*> seen(8);
    std::vector<std::thread> threads;
    threads.reserve(seen.size());
    for (KZLog*& log : seen) {
        threads.emplace_back([&log] { log = KZLog::sharedController(); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(seen, testing::Each(KZLog::sharedController()));
}

TEST_F(SharedLog, CannotBeMadeTwice) {
    KZLog::sharedController();
    EXPECT_EQ(KZLog::alloc(), nullptr);
}

TEST_F(SharedLog, IsTheOneThatWasAllocated) {
    KZLog* const first = KZLog::alloc();
    EXPECT_EQ(KZLog::alloc(), nullptr);
    EXPECT_EQ(KZLog::sharedController(), first);
}

TEST_F(SharedLog, ListensOnceForTheEndOfTheApplication) {
    KZLog::sharedController();
    KZLog::sharedController();
    EXPECT_EQ(application.observers.size(), 1U);
}

TEST_F(SharedLog, WritesTheReasonOfAnExceptionThatNobodyCatches) {
    fakes::FakeUncaughtExceptions exceptions;
    platform::Host host = makeHost();
    host.exceptions = &exceptions;
    const platform::ScopedHost scope(host);
    KZLog::createNewLog("Test");
    EXPECT_EQ(printed([&] { exceptions.raise("the roof is at 100%, and 3%@ of it leak"); }),
              "the roof is at 100%%, and 3 of it leak\n");
    EXPECT_EQ(read(log(1)).substr(read(log(1)).rfind(" - ")), " - the roof is at 100%, and 3%@ of it leak\n");
}

TEST_F(SharedLog, IsMadeOnAHostThatTellsOfNoExceptions) {
    platform::Host host = makeHost();
    host.exceptions = nullptr;
    const platform::ScopedHost scope(host);
    EXPECT_NE(KZLog::sharedController(), nullptr);
}

class LogShutdown : public LogFixture {
protected:
    LogShutdown() {
        KZLog::createNewLog("Test");
        KZLog::finishWriting();
    }
    // Ends the application while that many entries are in the queue, which goes on a little later.
    Lines entriesAfterShutdownWith(int queued) {
        KZLogTesting::queue().setSuspended(true);
        for (int number = 1; number <= queued; ++number) {
            KZLog::fastAppendLog("entry %i", number);
        }
        std::thread resuming([] {
            std::this_thread::sleep_for(50ms);
            KZLogTesting::queue().setSuspended(false);
        });
        application.observers.front()();
        resuming.join();
        return entries();
    }
};

TEST_F(LogShutdown, WritesTenQueuedEntries) {
    const Lines written = entriesAfterShutdownWith(10);
    ASSERT_EQ(written.size(), 10U);
    EXPECT_EQ(written.back(), "entry 10");
}

TEST_F(LogShutdown, DropsElevenQueuedEntries) { EXPECT_THAT(entriesAfterShutdownWith(11), IsEmpty()); }

TEST_F(LogShutdown, LosesLaterEntriesWithoutAWord) {
    KZLog::willTerminate();
    EXPECT_EQ(printed([] { onAnotherThread([] { KZLog::appendLog("late"); }); }), "");
    EXPECT_THAT(entries(), IsEmpty());
}

TEST_F(LogShutdown, IsHarmlessWhenRepeated) {
    KZLog::fastAppendLog("text");
    KZLog::willTerminate();
    KZLog::willTerminate();
    EXPECT_THAT(entries(), ElementsAre("text"));
}

TEST_F(LogShutdown, ClosesTheFile) {
    const auto openOnes = [this] {
        std::error_code ignored;  // the descriptor that lists them is gone by then
        int count = 0;
        for (const auto& descriptor : std::filesystem::directory_iterator("/proc/self/fd")) {
            count += std::filesystem::read_symlink(descriptor, ignored) == log(1) ? 1 : 0;
        }
        return count;
    };
    EXPECT_EQ(openOnes(), 1);
    KZLog::willTerminate();
    EXPECT_EQ(openOnes(), 0);
}

TEST_F(LogShutdown, ForgetsTheName) {
    KZLog::willTerminate();
    EXPECT_EQ(KZLog::sharedController()->appName(), "Fake");
}

TEST_F(LogShutdown, WhileOtherThreadsLogEndsAllTheSame) {
    std::atomic<bool> stop = false;
    std::vector<std::thread> threads;
    threads.reserve(3);
    for (int thread = 0; thread < 3; ++thread) {
        threads.emplace_back([&] {
            while (!stop) {
                KZLog::appendLog("entry");
            }
        });
    }
    std::this_thread::sleep_for(20ms);
    KZLog::willTerminate();
    stop = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_THAT(entries(log(1)), testing::Not(IsEmpty()));
}

class LogProcesses : public LogFixture {
protected:
    // Runs the work in a process of its own and returns how it ended, as waitpid tells it.
    static pid_t start(const std::function<void()>& work) {
        const pid_t child = ::fork();
        if (child == 0) {
            work();
            ::_exit(0);
        }
        return child;
    }
    static int end(pid_t child) {
        int status = -1;
        ::waitpid(child, &status, 0);
        return status;
    }
    static void writeMany(const char* name) {
        for (int number = 0; number < 4000; ++number) {
            KZLog::fastAppendLog("%s %i: %@", name, number, std::string(static_cast<std::size_t>(number) % 40, 'x'));
        }
        KZLog::finishWriting();
    }
};

TEST_F(LogProcesses, ThatShareAFileNeverTearALine) {
    bundle.executable = "Test";
    write(log(1), "");
    const pid_t first = start([] { writeMany("first"); });
    const pid_t second = start([] { writeMany("second"); });
    ASSERT_EQ(end(first), 0);
    ASSERT_EQ(end(second), 0);
    const Lines lines = entries(log(1));
    EXPECT_EQ(lines.size(), 8000U);
    EXPECT_THAT(lines, testing::Each(testing::MatchesRegex("(first|second) [0-9]+: ?x*")));
}

TEST_F(LogProcesses, LogTheExceptionThatEndsThem) {
    const int status = end(start([] {
        std::set_terminate([] { ::_exit(7); });  // what stood there before is called last
        KZLog::createNewLog("Test");
        KZLog::sharedController()->setNoPrinting(true);
        std::thread([] { throw std::runtime_error("the roof is at 100% load"); }).join();
    }));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7);
    EXPECT_THAT(entries(log(1)), Contains("the roof is at 100% load"));
}

TEST_F(LogProcesses, LogAThrownValueThatIsNoException) {
    const int status = end(start([] {
        std::set_terminate([] { ::_exit(7); });
        KZLog::createNewLog("Test");
        KZLog::sharedController()->setNoPrinting(true);
        std::thread([] { throw 42; }).join();
    }));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7);
    EXPECT_THAT(entries(log(1)), Contains("unknown exception"));
}

TEST_F(LogProcesses, KeepWhatWasWrittenWhenTheyAreKilled) {
    end(start([] {
        KZLog::createNewLog("Test");
        KZLog::finishWriting();  // the header is a backlog that an entry would not wait behind
        std::thread([] { KZLog::appendLog("on disk before the call returns"); }).join();
        ::raise(SIGKILL);
    }));
    EXPECT_THAT(entries(log(1)), Contains("on disk before the call returns"));
}

}  // namespace
