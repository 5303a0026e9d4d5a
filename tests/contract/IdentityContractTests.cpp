#include <gtest/gtest.h>

#include "HostUnderTest.h"
#include "tests/fakes/FakeIdentity.h"

namespace {

// What every host's identity promises.
class IdentityContract : public testing::TestWithParam<bool> {
protected:
    IdentityContract() { m_fake.homes = {{"ada", "/home/ada"}, {"root", host_under_test::superusersHome}}; }
    platform::Identity& identity() { return GetParam() ? *host_under_test::services().identity : m_fake; }

private:
    fakes::FakeIdentity m_fake;
};

TEST_P(IdentityContract, NamesTheUser) { EXPECT_FALSE(identity().userName().empty()); }

TEST_P(IdentityContract, GivesTheUserAnAbsoluteHome) { EXPECT_TRUE(identity().homeFolder().starts_with('/')); }

TEST_P(IdentityContract, KnowsTheHomesOfAccounts) {
    EXPECT_EQ(identity().homeFolderForUser("root"), host_under_test::superusersHome);
    EXPECT_TRUE(identity().homeFolderForUser(identity().userName()).value_or("").starts_with('/'));
}

TEST_P(IdentityContract, KnowsNoHomeOfAnAccountThatDoesNotExist) {
    EXPECT_EQ(identity().homeFolderForUser("nobody-by-that-name"), std::nullopt);
    EXPECT_EQ(identity().homeFolderForUser(""), std::nullopt);
}

TEST_P(IdentityContract, NamesAConsoleUserOrNobodyButNeverAnEmptyName) { EXPECT_NE(identity().consoleUser(), ""); }

INSTANTIATE_TEST_SUITE_P(Hosts, IdentityContract, testing::Bool(),
                         [](const auto& tested) { return tested.param ? host_under_test::name : "Fake"; });

}  // namespace
