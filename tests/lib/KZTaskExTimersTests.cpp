#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "lib/KZTaskEx/Timers.h"
#include "tests/fakes/ProcessCensus.h"

namespace {

using namespace std::chrono_literals;
using kz::Timers;
using Clock = Timers::Clock;

// What the timers' thread does, and when all of it has been done.
class Diary {
public:
    std::function<void()> entry(const std::string& text) {
        return [this, text] {
            const std::lock_guard lock(m_mutex);
            m_text += text;
        };
    }
    std::string after(std::chrono::milliseconds time) {
        std::atomic<bool> done = false;
        Timers::shared().add(Clock::now() + time, [&done] { done = true; });
        while (!done) {
            std::this_thread::sleep_for(1ms);
        }
        const std::lock_guard lock(m_mutex);
        return m_text;
    }

private:
    std::mutex m_mutex;
    std::string m_text;
};

TEST(Timers, DoTheirWorkInTheOrderOfTheTimes) {
    Diary diary;
    const auto now = Clock::now();
    Timers::shared().add(now + 60ms, diary.entry("c"));
    Timers::shared().add(now + 20ms, diary.entry("a"));
    Timers::shared().add(now + 40ms, diary.entry("b"));
    EXPECT_EQ(diary.after(100ms), "abc");
}

TEST(Timers, KeepTheOrderOfEqualTimes) {
    Diary diary;
    const auto time = Clock::now() + 20ms;
    for (const char* text : {"1", "2", "3", "4"}) {
        Timers::shared().add(time, diary.entry(text));
    }
    EXPECT_EQ(diary.after(50ms), "1234");
}

TEST(Timers, AreNeverEarly) {
    std::atomic<bool> done = false;
    std::atomic<bool> early = false;
    const auto time = Clock::now() + 30ms;
    Timers::shared().add(time, [&] {
        early = Clock::now() < time;
        done = true;
    });
    while (!done) {
        std::this_thread::sleep_for(1ms);
    }
    EXPECT_FALSE(early);
}

TEST(Timers, DoWorkOfThePastAtOnce) {
    Diary diary;
    Timers::shared().add(Clock::now() - 1h, diary.entry("late"));
    EXPECT_EQ(diary.after(0ms), "late");
}

TEST(Timers, ForgetWhatIsCancelled) {
    Diary diary;
    const auto token = Timers::shared().add(Clock::now() + 20ms, diary.entry("never"));
    Timers::shared().cancel(token);
    EXPECT_EQ(diary.after(50ms), "");
}

TEST(Timers, DoNotMindACancellationThatComesTooLate) {
    Diary diary;
    const auto token = Timers::shared().add(Clock::now(), diary.entry("done"));
    EXPECT_EQ(diary.after(20ms), "done");
    Timers::shared().cancel(token);
    EXPECT_EQ(diary.after(0ms), "done");
}

TEST(Timers, HaveFinishedWhatIsBeingDoneWhenItIsCancelled) {
    for (int round = 0; round < 200; ++round) {
        std::atomic<int> running = 0;
        const auto token = Timers::shared().add(Clock::now() + std::chrono::microseconds{round}, [&running] {
            ++running;
            std::this_thread::yield();
            --running;
        });
        std::this_thread::sleep_for(std::chrono::microseconds{100});
        Timers::shared().cancel(token);
        ASSERT_EQ(running, 0);
    }
}

TEST(Timers, AreServedByOneThread) {
    Diary diary;
    diary.after(0ms);  // starts it
    const auto before = fakes::ProcessCensus::take();
    const auto waitingBefore = Timers::shared().waiting();
    std::vector<Timers::Token> tokens;
    tokens.reserve(10000);
    for (int timer = 0; timer < 10000; ++timer) {
        tokens.push_back(Timers::shared().add(Clock::now() + 1h, [] {}));
    }
    EXPECT_EQ(fakes::ProcessCensus::take().threads, before.threads);
    for (const auto& token : tokens) {
        Timers::shared().cancel(token);
    }
    EXPECT_EQ(Timers::shared().waiting(), waitingBefore);
}

}  // namespace
