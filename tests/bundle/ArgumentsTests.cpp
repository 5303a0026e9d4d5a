#include "tools/commandline/Arguments.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using commandline::Arguments;
using commandline::Option;

constexpr std::array<Option, 2> options{{{'i', "item", "SOURCE=PLACE", "a file"}, {'q', "quiet", nullptr, "no words"}}};

TEST(CommandLines, KeepEveryValueOfARepeatedOptionInOrder) {
    const Arguments arguments({"--item", "a=/b", "-i", "c=/d", "--item=e=/f", "-ig=/h"}, options);
    EXPECT_EQ(arguments.values("item"), (std::vector<std::string>{"a=/b", "c=/d", "e=/f", "g=/h"}));
}

TEST(CommandLines, TakeTheLastValueOfAnOptionThatCountsOnce) {
    const Arguments arguments({"--item", "a=/b", "--item", "c=/d"}, options);
    EXPECT_EQ(arguments.value("item"), "c=/d");
}

TEST(CommandLines, HaveNoValuesOfAnOptionThatIsNotGiven) {
    const Arguments arguments({"-q"}, options);
    EXPECT_TRUE(arguments.values("item").empty());
    EXPECT_EQ(arguments.value("item"), std::nullopt);
}

}  // namespace
