#include <gtest/gtest.h>

#include "HostUnderTest.h"

namespace {

using platform::PropertyArray;
using platform::PropertyDictionary;
using platform::PropertyValue;

platform::PropertyLists& lists() { return *host_under_test::services().propertyLists; }

// What every host's property lists promise.
TEST(PropertyListsContract, ReadBackWhatTheyWrote) {
    const PropertyValue list{PropertyDictionary{
        {"text", {std::string("Grüße & <more>\n")}},
        {"integer", {std::int64_t{-9007199254740993}}},
        {"real", {0.1}},
        {"yes", {true}},
        {"no", {false}},
        {"date", {platform::Date(std::chrono::seconds(-1))}},
        {"data", {platform::PropertyData{0, 1, 255}}},
        {"array", {PropertyArray{{std::string()}, {PropertyArray{}}, {PropertyDictionary{}}}}},
    }};

    const auto read = lists().parse(lists().serialize(list));

    ASSERT_TRUE(std::holds_alternative<PropertyValue>(read)) << std::get<platform::Error>(read).description;
    EXPECT_EQ(std::get<PropertyValue>(read), list);
}

TEST(PropertyListsContract, ReadTheOldTextForm) {
    const auto read = lists().parse("{ a = (b, \"c d\"); }");

    ASSERT_TRUE(std::holds_alternative<PropertyValue>(read));
    EXPECT_EQ(std::get<PropertyValue>(read),
              (PropertyValue{PropertyDictionary{{"a", {PropertyArray{{std::string("b")}, {std::string("c d")}}}}}}));
}

TEST(PropertyListsContract, SayWhatIsWrongWithAnythingElse) {
    for (const char* bytes : {"", "<plist><dict>", "bplist00", "{", "two words"}) {
        const auto read = lists().parse(bytes);
        ASSERT_TRUE(std::holds_alternative<platform::Error>(read)) << bytes;
        EXPECT_NE(std::get<platform::Error>(read).code, 0);
        EXPECT_FALSE(std::get<platform::Error>(read).description.empty());
    }
}

}  // namespace
