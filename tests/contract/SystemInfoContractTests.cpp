#include <gtest/gtest.h>

#include <set>

#include "HostUnderTest.h"
#include "tests/fakes/FakeSystemInfo.h"
#include "tests/fakes/ScopedEnvironment.h"

namespace {

// What every host's system information promises.
class SystemInfoContract : public testing::TestWithParam<bool> {
protected:
    SystemInfoContract() { m_fake.environment["WICKFIELD_TEST_VARIABLE"] = ""; }
    platform::SystemInfo& system() { return GetParam() ? *host_under_test::services().system : m_fake; }

private:
    fakes::ScopedEnvironment m_variable{"WICKFIELD_TEST_VARIABLE", ""};
    fakes::FakeSystemInfo m_fake;
};

TEST_P(SystemInfoContract, TellsAnEmptyVariableFromOneThatIsNotSet) {
    EXPECT_EQ(system().environmentVariable("WICKFIELD_TEST_VARIABLE"), "");
    EXPECT_EQ(system().environmentVariable("WICKFIELD_TEST_VARIABLE_2"), std::nullopt);
}

TEST_P(SystemInfoContract, GivesEachUniqueStringOnce) {
    std::set<std::string> all;
    for (int i = 0; i < 1000; ++i) {
        all.insert(system().globallyUniqueString());
    }
    EXPECT_EQ(all.size(), 1000U);
}

TEST_P(SystemInfoContract, GivesUniqueStringsThatMayBeFileNames) {
    EXPECT_EQ(system().globallyUniqueString().find_first_of("/ \n"), std::string::npos);
}

TEST_P(SystemInfoContract, KnowsTheMachine) {
    EXPECT_FALSE(system().operatingSystemVersion().empty());
    EXPECT_GE(system().processorCount(), 1);
    EXPECT_GT(system().physicalMemory(), 0U);
}

INSTANTIATE_TEST_SUITE_P(Hosts, SystemInfoContract, testing::Bool(),
                         [](const auto& tested) { return tested.param ? host_under_test::name : "Fake"; });

}  // namespace
