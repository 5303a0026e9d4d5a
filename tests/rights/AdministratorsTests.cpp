#include "platform/linux/rights/Administrators.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <pwd.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using platform::rights::Administrator;
using platform::rights::administratorsFrom;

constexpr uid_t nobodyElse = 4'000'000;

std::vector<std::string> namesOf(const std::vector<Administrator>& administrators) {
    std::vector<std::string> names;
    std::ranges::transform(administrators, std::back_inserter(names), &Administrator::user);
    return names;
}

TEST(Administrators, KeepTheOrderInWhichTheyAreNamed) {
    EXPECT_EQ(namesOf(administratorsFrom({"unix-user:daemon", "unix-user:bin"}, nobodyElse)),
              (std::vector<std::string>{"daemon", "bin"}));
}

TEST(Administrators, PutThePresentUserFirst) {
    const passwd* const bin = ::getpwnam("bin");
    ASSERT_NE(bin, nullptr);
    EXPECT_EQ(namesOf(administratorsFrom({"unix-user:daemon", "unix-user:bin"}, bin->pw_uid)),
              (std::vector<std::string>{"bin", "daemon"}));
}

TEST(Administrators, DoNotTakeInThePresentUserWhoIsNone) {
    const passwd* const bin = ::getpwnam("bin");
    ASSERT_NE(bin, nullptr);
    EXPECT_EQ(namesOf(administratorsFrom({"unix-user:daemon"}, bin->pw_uid)), std::vector<std::string>{"daemon"});
}

TEST(Administrators, AppearOnce) {
    EXPECT_EQ(namesOf(administratorsFrom({"unix-user:daemon", "unix-user:daemon"}, nobodyElse)),
              std::vector<std::string>{"daemon"});
}

TEST(Administrators, LeaveOutRootWhenThereIsSomebodyElse) {
    EXPECT_EQ(namesOf(administratorsFrom({"unix-user:root", "unix-user:daemon"}, 0)),
              std::vector<std::string>{"daemon"});
}

TEST(Administrators, AreRootWhenThereIsNobodyElse) {
    EXPECT_EQ(namesOf(administratorsFrom({"unix-user:root"}, nobodyElse)), std::vector<std::string>{"root"});
}

TEST(Administrators, MayBeGivenByNumber) {
    EXPECT_EQ(namesOf(administratorsFrom({"unix-user:0"}, nobodyElse)), std::vector<std::string>{"root"});
}

TEST(Administrators, AreTheMembersOfAGroup) {
    const group* with = nullptr;
    ::setgrent();
    while ((with = ::getgrent()) != nullptr && (with->gr_mem[0] == nullptr || ::getpwnam(with->gr_mem[0]) == nullptr)) {
    }
    if (with == nullptr) {
        GTEST_SKIP() << "no group of this machine has members";
    }
    const std::string byName = std::string("unix-group:") + with->gr_name;
    const std::string byNumber = "unix-group:" + std::to_string(with->gr_gid);
    std::vector<std::string> members;
    for (char** member = with->gr_mem; *member != nullptr; ++member) {
        members.emplace_back(*member);
    }
    ::endgrent();
    EXPECT_EQ(namesOf(administratorsFrom({byName}, nobodyElse)), members);
    EXPECT_EQ(namesOf(administratorsFrom({byNumber}, nobodyElse)), members);
}

TEST(Administrators, AreNobodyWhenNothingNamedIsKnown) {
    EXPECT_TRUE(administratorsFrom({}, 0).empty());
    EXPECT_TRUE(administratorsFrom(
                    {"unix-user:no-such-account", "unix-user:3999999999", "unix-user:", "unix-group:no-such-group",
                     "unix-group:", "unix-netgroup:staff", "", "unix-user:99999999999999999999", "unix-user:-1"},
                    0)
                    .empty());
}

}  // namespace
