#include "platform/linux/tools/archive/WorkLine.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>

using platform::linux_host::WorkLine;

namespace {

TEST(AWorkLine, GivesResultsInTheOrderOfTheJobs) {
    WorkLine<int> line(4);
    for (int i = 0; i < 200; ++i) {
        line.add([i] {
            std::this_thread::sleep_for(std::chrono::microseconds((i * 37) % 200));
            return i;
        });
    }
    for (int i = 0; i < 200; ++i) {
        EXPECT_EQ(line.takeOldest(), i);
    }
    EXPECT_EQ(line.size(), 0U);
}

TEST(AWorkLine, ThrowsWhatAJobHasThrownAndGoesOn) {
    WorkLine<int> line(2);
    line.add([]() -> int { throw std::runtime_error("failed"); });
    line.add([] { return 2; });
    EXPECT_THROW(line.takeOldest(), std::runtime_error);
    EXPECT_EQ(line.takeOldest(), 2);
}

TEST(AWorkLine, DropsWorkThatNobodyWaitsFor) {
    std::atomic<int> done{0};
    {
        WorkLine<int> line(1);
        for (int i = 0; i < 1000; ++i) {
            line.add([&done] {
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
                return ++done;
            });
        }
        line.takeOldest();
    }
    EXPECT_LT(done, 1000);
}

}  // namespace
