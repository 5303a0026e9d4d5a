#include "app/UserPlaceholders.h"

#include "tests/app/AppFixture.h"

namespace {

class UserPlaceholder : public AppFixture {};

TEST_F(UserPlaceholder, IsTheFirstThatThePathBeginsWith) {
    const auto prefixOf = [](std::string_view path) {
        const auto* placeholder = UserPlaceholders::placeholderOf(path);
        return placeholder == nullptr ? std::string_view("none") : placeholder->prefix;
    };
    EXPECT_EQ(prefixOf("/Users/user/Library/Preferences/x"), "/Users/user/Library/Preferences");
    EXPECT_EQ(prefixOf("/Users/user/Library/Application Support"), "/Users/user/Library/Application Support");
    EXPECT_EQ(prefixOf("/Users/user/Documents/x"), "/Users/user/Documents");
    EXPECT_EQ(prefixOf("/Users/user/Library/x"), "/Users/user");
    EXPECT_EQ(prefixOf("/Users/username/x"), "/Users/user");
    EXPECT_EQ(prefixOf("/Users/User/x"), "none");
    EXPECT_EQ(prefixOf("Users/user/x"), "none");
    EXPECT_EQ(prefixOf(""), "none");
}

TEST_F(UserPlaceholder, GivesWayToTheUsersFolder) {
    EXPECT_EQ(UserPlaceholders::replaced("/Users/user/Library/Preferences/x"), home + "/Library/Preferences/x");
    EXPECT_EQ(UserPlaceholders::replaced("/Users/user/Documents/x/y"), home + "/Dokumente/x/y");
    EXPECT_EQ(UserPlaceholders::replaced("/Users/username/x"), home + "/name/x");
}

TEST_F(UserPlaceholder, IsNotLookedForWithinAPath) {
    EXPECT_EQ(UserPlaceholders::replaced("/Library/Users/user/x"), "/Library/Users/user/x");
    EXPECT_EQ(UserPlaceholders::replaced("bare"), "bare");
}

TEST_F(UserPlaceholder, LeadsNowhereWithoutAUser) {
    identity.uid = 0;  // and nobody at the console
    for (const auto& placeholder : UserPlaceholders::all()) {
        EXPECT_EQ(UserPlaceholders::replaced(std::string(placeholder.prefix) + "/x"), std::nullopt);
    }
    EXPECT_EQ(UserPlaceholders::replaced("/Library/x"), "/Library/x");
}

}  // namespace
