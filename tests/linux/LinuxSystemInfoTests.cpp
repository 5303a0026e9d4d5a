#include "platform/linux/services/LinuxSystemInfo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <mutex>
#include <set>
#include <thread>

#include "tests/fakes/ScopedEnvironment.h"

namespace {

using platform::linux_host::LinuxSystemInfo;

TEST(UniqueStrings, AreAUuidTheProcessAndACount) {
    EXPECT_THAT(LinuxSystemInfo().globallyUniqueString(),
                testing::MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}-" +
                                      std::to_string(::getpid()) + "-[0-9]+"));
}

TEST(UniqueStrings, AreNeverTheSameTwiceWhicheverThreadAsks) {
    constexpr std::size_t each = 2000;
    std::set<std::string> all;
    std::mutex mutex;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < 4; ++i) {
            threads.emplace_back([&] {
                for (std::size_t round = 0; round < each; ++round) {
                    auto text = LinuxSystemInfo().globallyUniqueString();
                    const std::lock_guard lock(mutex);
                    all.insert(std::move(text));
                }
            });
        }
    }
    EXPECT_EQ(all.size(), 4 * each);
}

TEST(SystemInfo, TellsAVariableThatIsSetToNothingFromOneThatIsNotSet) {
    {
        const fakes::ScopedEnvironment set("WICKFIELD_TEST_VARIABLE", "");
        EXPECT_EQ(LinuxSystemInfo().environmentVariable("WICKFIELD_TEST_VARIABLE"), "");
    }
    const fakes::ScopedEnvironment unset("WICKFIELD_TEST_VARIABLE", std::nullopt);
    EXPECT_EQ(LinuxSystemInfo().environmentVariable("WICKFIELD_TEST_VARIABLE"), std::nullopt);
}

TEST(SystemInfo, NamesTheOperatingSystemWithoutQuotes) {
    const auto version = LinuxSystemInfo().operatingSystemVersion();

    EXPECT_FALSE(version.empty());
    EXPECT_EQ(version.find_first_of("\"\n="), std::string::npos) << version;
}

TEST(SystemInfo, CountsProcessorsAndMemoryOfThisMachine) {
    EXPECT_EQ(LinuxSystemInfo().processorCount(), std::thread::hardware_concurrency());
    EXPECT_GT(LinuxSystemInfo().physicalMemory(), std::uint64_t{64} << 20U);
}

}  // namespace
