#include "platform/posix/StagedName.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using platform::posix::stagedName;
using platform::posix::stagedSibling;

TEST(StagedName, IsHiddenAndNeverTheSame) {
    std::set<std::string> seen;
    for (int i = 0; i < 1000; ++i) {
        const std::string name = stagedName();
        EXPECT_EQ(name.size(), 27U);
        EXPECT_TRUE(name.starts_with(".wickfield-"));
        EXPECT_EQ(name.find_first_not_of("0123456789abcdef", 11), std::string::npos) << name;
        seen.insert(name);
    }
    EXPECT_EQ(seen.size(), 1000U);
}

TEST(StagedName, OfASiblingStandsInTheSameFolder) {
    EXPECT_TRUE(stagedSibling("/a/b").starts_with("/a/.wickfield-"));
    EXPECT_TRUE(stagedSibling("/a//b//").starts_with("/a/.wickfield-"));
    EXPECT_TRUE(stagedSibling("/b").starts_with("/.wickfield-"));
    EXPECT_TRUE(stagedSibling("b").starts_with("./.wickfield-"));
}

}  // namespace
