#include "platform/posix/BackgroundWorkers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <latch>
#include <memory>
#include <thread>

namespace {

using platform::posix::BackgroundWorkers;
using namespace std::chrono_literals;

TEST(BackgroundWork, RunsOnAnotherThread) {
    BackgroundWorkers workers;
    std::promise<std::thread::id> thread;

    workers.perform([&] { thread.set_value(std::this_thread::get_id()); });

    EXPECT_NE(thread.get_future().get(), std::this_thread::get_id());
}

TEST(BackgroundWork, IsAllDone) {
    std::atomic<int> done = 0;
    {
        BackgroundWorkers workers;
        for (int piece = 0; piece < 10000; ++piece) {
            workers.perform([&] { ++done; });
        }
    }

    EXPECT_EQ(done, 10000);
}

TEST(BackgroundWork, GoesOnBesideWorkThatIsStuck) {
    BackgroundWorkers workers;
    std::latch stuck(1);
    std::promise<void> done;

    workers.perform([&] { stuck.wait(); });
    workers.perform([&] { done.set_value(); });

    EXPECT_EQ(done.get_future().wait_for(10s), std::future_status::ready);
    stuck.count_down();
}

TEST(BackgroundWork, NeverTakesMoreThanAFewThreads) {
    BackgroundWorkers workers;
    std::latch stuck(1);

    for (std::size_t piece = 0; piece < 10 * BackgroundWorkers::mostThreads; ++piece) {
        workers.perform([&] { stuck.wait(); });
    }

    EXPECT_EQ(workers.threads(), BackgroundWorkers::mostThreads);
    stuck.count_down();
}

TEST(BackgroundWork, LeavesNoThreadWhenThereIsNoneOfIt) {
    BackgroundWorkers workers;
    workers.perform([] {});

    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (workers.threads() > 0 && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(1ms);
    }

    EXPECT_EQ(workers.threads(), 0U);
}

TEST(BackgroundWork, MayHandOverMoreWorkAndLetsGoOfWhatItHeld) {
    BackgroundWorkers workers;
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watch = held;
    std::promise<void> done;

    workers.perform([&workers, &done, held = std::move(held)] { workers.perform([&] { done.set_value(); }); });
    done.get_future().wait();
    const auto deadline = std::chrono::steady_clock::now() + 10s;
    while (!watch.expired() && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::sleep_for(1ms);
    }

    EXPECT_TRUE(watch.expired());
}

}  // namespace
