#include "tools/wickfield-bundle/project/NearestName.h"

#include <gtest/gtest.h>

#include <array>

namespace {

constexpr std::array<std::string_view, 3> names{"version", "author", "tree"};

TEST(NearestName, IsTheOneWithTheFewestChanges) {
    EXPECT_EQ(wickfield_bundle::nearestName("verison", names), "version");
    EXPECT_EQ(wickfield_bundle::nearestName("auther", names), "author");
    EXPECT_EQ(wickfield_bundle::nearestName("trees", names), "tree");
}

TEST(NearestName, TakesNoAccountOfTheCase) { EXPECT_EQ(wickfield_bundle::nearestName("VERSION", names), "version"); }

TEST(NearestName, IsNoneWhenAllAreTooDifferent) {
    EXPECT_EQ(wickfield_bundle::nearestName("colour", names), std::nullopt);
    EXPECT_EQ(wickfield_bundle::nearestName("", names), std::nullopt);
    EXPECT_EQ(wickfield_bundle::nearestName(std::string(100'000, 'v'), names), std::nullopt);
}

}  // namespace
