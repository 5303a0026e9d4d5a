#include "tools/wickfield-bundle/create/FileTimes.h"

#include <gtest/gtest.h>

#include "tests/fakes/ScopedEnvironment.h"
#include "tools/wickfield-bundle/create/CreateFailure.h"

namespace {

using wickfield_bundle::FileTimes;

constexpr timespec at(time_t seconds, long nanoseconds = 0) { return {.tv_sec = seconds, .tv_nsec = nanoseconds}; }

TEST(FileTimes, KeepWhatASourceHas) {
    FileTimes times(std::nullopt);
    const timespec kept = times.forCopy(at(1000, 7));
    EXPECT_EQ(kept.tv_sec, 1000);
    EXPECT_EQ(kept.tv_nsec, 7);
}

TEST(FileTimes, KnowTheNewest) {
    FileTimes times(std::nullopt);
    for (const timespec each : {at(5, 1), at(9, 3), at(9, 2), at(1)}) {
        times.forCopy(each);
    }
    EXPECT_EQ(times.newest().tv_sec, 9);
    EXPECT_EQ(times.newest().tv_nsec, 3);
}

TEST(FileTimes, PassNoLimit) {
    FileTimes times(1000);
    EXPECT_EQ(times.forCopy(at(999, 7)).tv_nsec, 7);
    EXPECT_EQ(times.forCopy(at(1000, 7)).tv_nsec, 0);
    EXPECT_EQ(times.forCopy(at(5000)).tv_sec, 1000);
    EXPECT_EQ(times.newest().tv_sec, 1000);
}

TEST(LatestTime, IsTheEnvironments) {
    const fakes::ScopedEnvironment none("SOURCE_DATE_EPOCH", std::nullopt);
    EXPECT_EQ(FileTimes::latestByEnvironment(), std::nullopt);
    const fakes::ScopedEnvironment some("SOURCE_DATE_EPOCH", "1700000000");
    EXPECT_EQ(FileTimes::latestByEnvironment(), 1'700'000'000);
}

TEST(LatestTime, IsRefusedWhenItIsNoNumber) {
    for (const char* const text : {"", "yesterday", "12x", "-1", "1.5", "99999999999999999999999"}) {
        const fakes::ScopedEnvironment variable("SOURCE_DATE_EPOCH", text);
        EXPECT_THROW(FileTimes::latestByEnvironment(), wickfield_bundle::SenselessProject) << text;
    }
}

}  // namespace
