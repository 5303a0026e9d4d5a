#include <gtest/gtest.h>

#include "platform/linux/services/LinuxHost.h"
#include "tests/fakes/FakeIdentity.h"

namespace {

// What every host's identity promises.
class IdentityContract : public testing::TestWithParam<bool> {
protected:
    IdentityContract() { m_fake.homes = {{"ada", "/home/ada"}, {"root", "/root"}}; }
    platform::Identity& identity() { return GetParam() ? *platform::linux_host::services().identity : m_fake; }

private:
    fakes::FakeIdentity m_fake;
};

TEST_P(IdentityContract, NamesTheUser) { EXPECT_FALSE(identity().userName().empty()); }

TEST_P(IdentityContract, GivesTheUserAnAbsoluteHome) { EXPECT_TRUE(identity().homeFolder().starts_with('/')); }

TEST_P(IdentityContract, KnowsTheHomesOfAccounts) {
    EXPECT_EQ(identity().homeFolderForUser("root"), "/root");
    EXPECT_TRUE(identity().homeFolderForUser(identity().userName()).value_or("").starts_with('/'));
}

TEST_P(IdentityContract, KnowsNoHomeOfAnAccountThatDoesNotExist) {
    EXPECT_EQ(identity().homeFolderForUser("nobody-by-that-name"), std::nullopt);
    EXPECT_EQ(identity().homeFolderForUser(""), std::nullopt);
}

TEST_P(IdentityContract, NamesAConsoleUserOrNobodyButNeverAnEmptyName) { EXPECT_NE(identity().consoleUser(), ""); }

INSTANTIATE_TEST_SUITE_P(Hosts, IdentityContract, testing::Bool(),
                         [](const auto& tested) { return tested.param ? "Linux" : "Fake"; });

}  // namespace
