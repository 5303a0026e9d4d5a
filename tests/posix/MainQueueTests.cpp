#include "platform/posix/MainQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using platform::posix::MainQueue;

TEST(MainQueue, AsksTheToolkitToServeEachPieceOfWork) {
    std::atomic<int> wakes = 0;
    MainQueue queue([&wakes] { ++wakes; });
    queue.perform([] {});
    std::jthread([&queue] { queue.perform([] {}); }).join();
    EXPECT_EQ(wakes, 2);
}

TEST(MainQueue, ServesAllThatIsWaitingInOrder) {
    MainQueue queue;
    std::string order;
    queue.perform([&order] { order += "a"; });
    queue.perform([&order] { order += "b"; });
    queue.perform([&order] { order += "c"; });
    queue.serve();
    EXPECT_EQ(order, "abc");
}

TEST(MainQueue, TellsHowMuchWorkNobodyHasBegun) {
    MainQueue queue;
    std::vector<std::size_t> seen{queue.waiting()};
    queue.perform([&] { seen.push_back(queue.waiting()); });
    queue.perform([&] { seen.push_back(queue.waiting()); });
    seen.push_back(queue.waiting());
    queue.serve();
    EXPECT_EQ(seen, (std::vector<std::size_t>{0, 2, 1, 0}));
}

TEST(MainQueue, LeavesWorkThatIsAddedMeanwhileForTheNextTime) {
    MainQueue queue;
    int runs = 0;
    std::function<void()> again = [&] {
        ++runs;
        queue.perform(again);
    };
    queue.perform(again);
    queue.serve();
    EXPECT_EQ(runs, 1);
    queue.serve();
    EXPECT_EQ(runs, 2);
}

TEST(MainQueue, GoesOnInANestedLoop) {
    MainQueue queue;
    std::string order;
    queue.perform([&] {
        order += "outer(";
        queue.runNextEvent(0ms);
        order += ")";
    });
    queue.perform([&order] { order += "inner"; });
    queue.serve();
    EXPECT_EQ(order, "outer(inner)");
}

TEST(MainQueue, ReleasesAWaiterInANestedLoop) {
    MainQueue queue;
    std::atomic<bool> released = false;
    bool seenInside = false;
    std::jthread waiter;
    queue.perform([&] {
        waiter = std::jthread([&] {
            queue.performAndWait([] {});
            released = true;
        });
        for (int slice = 0; slice < 1000 && !released; ++slice) {
            queue.runNextEvent(10ms);
        }
        seenInside = released;
    });
    queue.serve();
    EXPECT_TRUE(seenInside);
}

TEST(MainQueue, CarriesWorkOfManyThreadsWithoutLoss) {
    MainQueue queue;
    int sum = 0;  // without a lock: only the main thread touches it
    std::atomic<int> finished = 0;
    std::vector<std::jthread> threads;
    threads.reserve(8);
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([&] {
            for (int piece = 0; piece < 200; ++piece) {
                if (piece % 2 == 0) {
                    queue.perform([&sum] { ++sum; });
                } else {
                    queue.performAndWait([&sum] { ++sum; });
                }
            }
            ++finished;
        });
    }
    while (finished < 8) {
        queue.runNextEvent(10ms);
    }
    queue.serve();
    EXPECT_EQ(sum, 1600);
}

TEST(MainQueueDeathTest, EndsTheProgramWhenWorkThrows) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            MainQueue queue;
            queue.perform([] { throw 1; });
            queue.serve();
        },
        "");
}

}  // namespace
