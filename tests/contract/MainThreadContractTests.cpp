// What every main thread keeps to: the one of the tests and the one without a toolkit.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "platform/posix/MainQueue.h"
#include "tests/fakes/FakeMainThread.h"
#include "tests/fakes/JoiningThread.h"

namespace {

using namespace std::chrono_literals;

template <typename Kind>
class AMainThread : public testing::Test {
protected:
    Kind thread;
};

using Kinds = testing::Types<fakes::FakeMainThread, platform::posix::MainQueue>;
TYPED_TEST_SUITE(AMainThread, Kinds);

TYPED_TEST(AMainThread, KnowsItself) {
    EXPECT_TRUE(this->thread.isCurrent());
    bool elsewhere = true;
    fakes::JoiningThread([this, &elsewhere] { elsewhere = this->thread.isCurrent(); }).join();
    EXPECT_FALSE(elsewhere);
}

TYPED_TEST(AMainThread, DoesItsOwnWorkAtOnceWhenItWaits) {
    bool done = false;
    this->thread.performAndWait([&done] { done = true; });
    EXPECT_TRUE(done);
}

TYPED_TEST(AMainThread, DoesItsOwnWorkLaterWhenItDoesNotWait) {
    bool done = false;
    this->thread.perform([&done] { done = true; });
    EXPECT_FALSE(done);
    this->thread.runNextEvent(1s);
    EXPECT_TRUE(done);
}

TYPED_TEST(AMainThread, HasDoneTheWorkWhenTheWaitIsOver) {
    std::atomic<bool> over = false;
    bool done = false;
    bool seen = false;
    fakes::JoiningThread other([&] {
        this->thread.performAndWait([&done] {
            std::this_thread::sleep_for(20ms);
            done = true;
        });
        seen = done;
        over = true;
    });
    while (!over) {
        this->thread.runNextEvent(10ms);
    }
    other.join();
    EXPECT_TRUE(seen);
}

TYPED_TEST(AMainThread, DoesWorkOnItself) {
    std::atomic<bool> over = false;
    std::thread::id where;
    fakes::JoiningThread other([&] {
        this->thread.performAndWait([&where] { where = std::this_thread::get_id(); });
        over = true;
    });
    while (!over) {
        this->thread.runNextEvent(10ms);
    }
    other.join();
    EXPECT_EQ(where, std::this_thread::get_id());
}

TYPED_TEST(AMainThread, KeepsTheOrderOfOneThread) {
    std::string order;
    std::atomic<bool> over = false;
    fakes::JoiningThread other([&] {
        this->thread.perform([&order] { order += "1"; });
        this->thread.perform([&order] { order += "2"; });
        this->thread.performAndWait([&order] { order += "3"; });
        over = true;
    });
    while (!over) {
        this->thread.runNextEvent(10ms);
    }
    other.join();
    EXPECT_EQ(order, "123");
}

TYPED_TEST(AMainThread, WaitsASliceForAnEvent) {
    const auto start = std::chrono::steady_clock::now();
    this->thread.runNextEvent(30ms);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 29ms);
}

TYPED_TEST(AMainThread, DoesNotSleepThroughWorkThatComes) {
    bool done = false;
    fakes::JoiningThread other([&] {
        std::this_thread::sleep_for(20ms);
        this->thread.perform([&done] { done = true; });
    });
    const auto start = std::chrono::steady_clock::now();
    this->thread.runNextEvent(10s);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 5s);
    EXPECT_TRUE(done);
}

TYPED_TEST(AMainThread, OnlyLooksInASliceOfNoTime) {
    const auto start = std::chrono::steady_clock::now();
    for (int look = 0; look < 100; ++look) {
        this->thread.runNextEvent(0ms);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1s);
}

}  // namespace
