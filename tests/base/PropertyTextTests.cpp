#include "lib/base/PropertyText.h"

#include <gtest/gtest.h>

#include <chrono>
#include <map>

#include "platform/ports/Host.h"

namespace {

using platform::PropertyArray;
using platform::PropertyData;
using platform::PropertyDictionary;
using platform::PropertyValue;
using namespace std::chrono_literals;

PropertyValue text(const char* value) { return {.value = std::string(value)}; }
PropertyValue integer(std::int64_t value) { return {.value = value}; }

std::string described(const PropertyValue& value) { return kz::description(value); }

TEST(Descriptions, ShowAStringAsItIs) { EXPECT_EQ(described(text("a \"b\"\n")), "a \"b\"\n"); }

TEST(Descriptions, ShowNumbersInDecimal) {
    EXPECT_EQ(described(integer(-42)), "-42");
    EXPECT_EQ(described({.value = 1.5}), "1.5");
    EXPECT_EQ(described({.value = 0.1}), "0.1");
    EXPECT_EQ(described({.value = 3.0}), "3");
}

TEST(Descriptions, ShowBooleansAsDigits) {
    EXPECT_EQ(described({.value = true}), "1");
    EXPECT_EQ(described({.value = false}), "0");
}

TEST(Descriptions, ShowDatesInUTC) {
    const auto day = std::chrono::sys_days(std::chrono::year(2026) / 11 / 21);
    EXPECT_EQ(described({.value = platform::Date(day + 1h + 15min)}), "2026-11-21 01:15:00 +0000");
    EXPECT_EQ(kz::description(platform::Date(day + 23h + 59min + 59s + 999ms)), "2026-11-21 23:59:59 +0000");
    EXPECT_EQ(kz::description(platform::Date(-1s)), "1969-12-31 23:59:59 +0000");
}

TEST(Descriptions, ShowDataByItsBytes) {
    EXPECT_EQ(described({.value = PropertyData{1, 2, 3}}), "{length = 3, bytes = 0x010203}");
    EXPECT_EQ(described({.value = PropertyData{}}), "{length = 0, bytes = 0x}");
}

TEST(Descriptions, ShortenLongData) {
    EXPECT_EQ(described({.value = PropertyData(1000000, 0xAB)}),
              "{length = 1000000, bytes = 0xabababab abababab abababab abababab ... abababab abababab}");
}

TEST(Descriptions, ShowArraysLineByLine) {
    EXPECT_EQ(described({.value = PropertyArray{text("a"), text("b c"), integer(-1)}}),
              "(\n    a,\n    \"b c\",\n    -1\n)");
    EXPECT_EQ(described({.value = PropertyArray{}}), "(\n)");
}

TEST(Descriptions, ShowDictionariesByTheirSortedKeys) {
    const PropertyDictionary dictionary{{"b", text("")}, {"a-b", text("say \"x\\y\"")}, {"A_1", integer(7)}};
    EXPECT_EQ(described({.value = dictionary}),
              "{\n    A_1 = 7;\n    \"a-b\" = \"say \\\"x\\\\y\\\"\";\n    b = \"\";\n}");
}

TEST(Descriptions, NestByFourBlanks) {
    const PropertyDictionary inner{{"k", {.value = PropertyArray{text("v")}}}};
    EXPECT_EQ(described({.value = PropertyArray{{.value = inner}}}),
              "(\n    {\n        k = (\n            v\n        );\n    }\n)");
}

TEST(Descriptions, EndSomewhereForAValueNestedWithoutEnd) {
    PropertyValue value = text("core");
    for (int depth = 0; depth < 1000; ++depth) {
        PropertyArray array;
        array.push_back(std::move(value));
        value = PropertyValue{.value = std::move(array)};
    }
    EXPECT_NE(kz::description(value).find("..."), std::string::npos);
}

TEST(BooleanValues, AreTrueForNumbersThatAreNotZero) {
    EXPECT_TRUE(kz::boolValue({.value = true}));
    EXPECT_TRUE(kz::boolValue(integer(-2)));
    EXPECT_TRUE(kz::boolValue({.value = 0.5}));
    EXPECT_FALSE(kz::boolValue({.value = false}));
    EXPECT_FALSE(kz::boolValue(integer(0)));
    EXPECT_FALSE(kz::boolValue({.value = 0.0}));
}

TEST(BooleanValues, AreTrueForStringsThatSayYes) {
    for (const char* const yes : {"YES", "yes", "True", "t", "1", "9", "  1", "-1", "+Y", "0003", " -00y"}) {
        EXPECT_TRUE(kz::boolValue(text(yes))) << yes;
    }
}

TEST(BooleanValues, AreFalseForOtherStrings) {
    for (const char* const no : {"", "NO", "false", "0", "000", "on", "--1", "x1", "+", "0 1"}) {
        EXPECT_FALSE(kz::boolValue(text(no))) << no;
    }
}

TEST(BooleanValues, AreFalseForOtherKinds) {
    EXPECT_FALSE(kz::boolValue({.value = PropertyArray{integer(1)}}));
    EXPECT_FALSE(kz::boolValue({.value = PropertyData{1}}));
    EXPECT_FALSE(kz::boolValue({.value = platform::Date(1s)}));
}

}  // namespace
