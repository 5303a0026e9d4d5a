#include "platform/linux/rights/Accounts.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <string>

namespace {

using platform::rights::accountNamed;
using platform::rights::accountOf;

TEST(Accounts, AreFoundByNameAndByNumber) {
    const auto root = accountNamed("root");
    ASSERT_TRUE(root);
    EXPECT_EQ(root->user, "root");
    ASSERT_TRUE(accountOf(0));
    EXPECT_EQ(accountOf(0)->user, "root");
}

TEST(Accounts, HaveTheFirstFieldOfWhatIsNotedAsTheirRealName) {
    const passwd* const entry = ::getpwuid(0);
    ASSERT_NE(entry, nullptr);
    const std::string noted = entry->pw_gecos;
    EXPECT_EQ(accountNamed("root")->realName, noted.substr(0, noted.find(',')));
}

TEST(Accounts, AreNotMadeUp) {
    EXPECT_FALSE(accountNamed("no-such-account-here"));
    EXPECT_FALSE(accountOf(4'000'000'000U));
}

TEST(Accounts, NeverHaveANameThatIsAnOptionOrNoLine) {
    EXPECT_FALSE(accountNamed(""));
    EXPECT_FALSE(accountNamed("-c"));
    EXPECT_FALSE(accountNamed("root\n"));
    EXPECT_FALSE(accountNamed(std::string("root\0x", 6)));
}

}  // namespace
