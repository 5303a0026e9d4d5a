#include "platform/linux/tools/archive/WorkLine.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <fstream>
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

// A thread takes address space, so that a limit to it is one to threads.
void allowNoMoreThan(rlim_t bytes) {
    std::ifstream sizes("/proc/self/statm");
    rlim_t pages = 0;
    sizes >> pages;
    const rlimit limit{pages * 4096 + bytes, RLIM_INFINITY};
    ::setrlimit(RLIMIT_AS, &limit);
}

int sumOfTenJobs(unsigned threads) {
    WorkLine<int> line(threads);
    for (int i = 0; i < 10; ++i) {
        line.add([i] { return i; });
    }
    int sum = 0;
    while (line.size() > 0) {
        sum += line.takeOldest();
    }
    return sum;
}

TEST(AWorkLine, DoesWithFewerThreadsWhereTheSystemGivesNoMore) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer takes address space of its own";
#endif
    for (const rlim_t bytes : {rlim_t{1} << 20U, rlim_t{64} << 20U}) {
        EXPECT_EXIT(
            {
                allowNoMoreThan(bytes);
                std::_Exit(sumOfTenJobs(1000));
            },
            testing::ExitedWithCode(45), "");
    }
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
