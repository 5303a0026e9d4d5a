#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <plist/plist.h>

#include <cmath>
#include <limits>
#include <random>

#include "tests/linux/PropertyListFixture.h"

namespace {

using namespace std::string_literals;
using fixture::integer;
using fixture::PropertyArray;
using fixture::PropertyData;
using fixture::PropertyDictionary;
using fixture::PropertyValue;
using fixture::refusalOf;
using fixture::secondsSince1970;
using fixture::text;
using fixture::value;
using fixture::valueOf;
using testing::HasSubstr;

// A binary list of the given objects, of which the first is the root, with one-byte references.
std::string binary(const std::vector<std::string>& objects) {
    std::string bytes = "bplist00";
    std::string table;
    const auto append = [](std::string& to, std::size_t number, int size) {
        for (int byte = size - 1; byte >= 0; --byte) {
            to += static_cast<char>(number >> (8U * static_cast<unsigned>(byte)));
        }
    };
    for (const auto& object : objects) {
        append(table, bytes.size(), 4);
        bytes += object;
    }
    const std::size_t tableOffset = bytes.size();
    bytes += table + std::string(6, '\0') + '\x04' + '\x01';
    append(bytes, objects.size(), 8);
    append(bytes, 0, 8);
    append(bytes, tableOffset, 8);
    return bytes;
}

// What an independent writer makes of an XML list.
std::string convertedByLibplist(const std::string& xml) {
    plist_t list = nullptr;
    plist_from_xml(xml.data(), static_cast<std::uint32_t>(xml.size()), &list);
    char* bytes = nullptr;
    std::uint32_t length = 0;
    plist_to_bin(list, &bytes, &length);
    std::string result(bytes, length);
    plist_to_xml_free(bytes);
    plist_free(list);
    return result;
}

std::string serialized(const PropertyValue& list) { return platform::linux_host::LinuxPropertyLists().serialize(list); }

PropertyValue everyKind() {
    PropertyArray many;
    for (int i = 0; i < 300; ++i) {
        many.push_back(integer(std::int64_t{i} * i * i));
    }
    return value(PropertyDictionary{{"ascii", text("text")},
                                    {"unicode", text("Grüße 🎹 " + std::string(40, 'x'))},
                                    {"empty", text("")},
                                    {"small", integer(7)},
                                    {"medium", integer(70000)},
                                    {"negative", integer(-42)},
                                    {"largest", integer(std::numeric_limits<std::int64_t>::max())},
                                    {"real", value(-2.5)},
                                    {"yes", value(true)},
                                    {"no", value(false)},
                                    {"date", value(secondsSince1970(1795223700))},
                                    {"data", value(PropertyData(500, 0xA5))},
                                    {"many", value(many)},
                                    {"nested", value(PropertyDictionary{{"a", value(PropertyArray{})}})}});
}

TEST(BinaryPropertyList, OfAnotherWriterHoldsEveryKindOfValue) {
    EXPECT_EQ(valueOf(convertedByLibplist(serialized(everyKind()))), everyKind());
}

TEST(BinaryPropertyList, MayHaveAnyKindOfRoot) {
    EXPECT_EQ(valueOf(binary({"\x09"})), value(true));
    EXPECT_EQ(valueOf(binary({"\x08"})), value(false));
    EXPECT_EQ(valueOf(binary({"\x53"s + "abc"})), text("abc"));
    EXPECT_EQ(valueOf(binary({"\xA0"})), value(PropertyArray{}));
}

TEST(BinaryPropertyList, ReadsIntegersByTheirSize) {
    EXPECT_EQ(valueOf(binary({"\x10\xFF"})), integer(255));
    EXPECT_EQ(valueOf(binary({"\x11\xFF\xFF"})), integer(65535));
    EXPECT_EQ(valueOf(binary({"\x12\xFF\xFF\xFF\xFF"})), integer(4294967295));
    EXPECT_EQ(valueOf(binary({"\x13"s + std::string(8, '\xFF')})), integer(-1));
    EXPECT_EQ(valueOf(binary({"\x14"s + std::string(16, '\xFF')})), integer(-1));
    EXPECT_EQ(valueOf(binary({"\x14"s + std::string(15, '\0') + "\x05"})), integer(5));
}

TEST(BinaryPropertyList, TurnsLargerIntegersIntoReals) {
    EXPECT_EQ(valueOf(binary({"\x14"s + std::string(8, '\0') + std::string(8, '\xFF')})),
              value(18446744073709551615.0));
    EXPECT_EQ(valueOf(binary({"\x14\x80"s + std::string(15, '\0')})), value(-std::pow(2.0, 127)));
}

TEST(BinaryPropertyList, ReadsRealsOfBothSizes) {
    EXPECT_EQ(valueOf(binary({"\x22\x3F\xC0\x00\x00"s})), value(1.5));
    EXPECT_EQ(valueOf(binary({"\x23\x3F\xF8\x00\x00\x00\x00\x00\x00"s})), value(1.5));
    EXPECT_EQ(valueOf(binary({"\x23\x7F\xF0\x00\x00\x00\x00\x00\x00"s})),
              value(std::numeric_limits<double>::infinity()));
}

TEST(BinaryPropertyList, CountsDatesFrom2001) {
    EXPECT_EQ(valueOf(binary({"\x33"s + std::string(8, '\0')})), value(secondsSince1970(978307200)));
    // 1960: 1293840000 seconds earlier, which is below what 32 bits and 1970 allow.
    EXPECT_EQ(valueOf(binary({"\x33\xC1\xD3\x47\x9D\x00\x00\x00\x00"s})),
              value(secondsSince1970(978307200 - 1293841408)));
    EXPECT_EQ(valueOf(binary({"\x33\x3F\xE0\x00\x00\x00\x00\x00\x00"s})),
              value(secondsSince1970(978307200) + std::chrono::milliseconds(500)));
}

TEST(BinaryPropertyList, MovesDatesThatCannotBeHeldToTheNearestThatCan) {
    EXPECT_EQ(valueOf(binary({"\x33\x7F\xF0\x00\x00\x00\x00\x00\x00"s})), value(platform::Date::max()));
    EXPECT_EQ(valueOf(binary({"\x33\xFF\xF0\x00\x00\x00\x00\x00\x00"s})), value(platform::Date::min()));
}

TEST(BinaryPropertyList, KeepsTextThatHoldsANul) { EXPECT_EQ(valueOf(binary({"\x53\x61\x00\x62"s})), text("a\0b"s)); }

TEST(BinaryPropertyList, ReadsLongCountsFromAnIntegerOfTheirOwn) {
    EXPECT_EQ(valueOf(binary({"\x5F\x10\x14" + std::string(20, 'x')})), text(std::string(20, 'x')));
    EXPECT_EQ(valueOf(binary({"\x5F\x13"s + std::string(7, '\0') + "\x02" + "ab"})), text("ab"));
}

TEST(BinaryPropertyList, SharesAnObjectAmongSeveral) {
    EXPECT_EQ(valueOf(binary({"\xA2\x01\x01", "\x51x"})), value(PropertyArray{text("x"), text("x")}));
}

TEST(BinaryPropertyList, TakesTheLastOfEqualKeys) {
    EXPECT_EQ(valueOf(binary({"\xD2\x01\x01\x02\x03", "\x51k", "\x10\x01", "\x10\x02"})),
              value(PropertyDictionary{{"k", integer(2)}}));
}

TEST(BinaryPropertyList, WithAnObjectOfNoPropertyListIsRefused) {
    for (const auto& object : {"\x00"s, "\x0F"s, "\x80\x01"s, "\xC0"s, "\xB0"s, "\xF0"s,
                               "\x15"s + std::string(32, '\0'), "\x21\x00\x00"s, "\x30"s, "\x51\xFF"s, "\x5F\x51x"s}) {
        EXPECT_THAT(refusalOf(binary({object})), HasSubstr("cannot be read")) << testing::PrintToString(object);
    }
}

TEST(BinaryPropertyList, WithAKeyThatIsNoStringIsRefused) {
    EXPECT_THAT(refusalOf(binary({"\xD1\x01\x01", "\x10\x01"})), HasSubstr("key is no string"));
}

TEST(BinaryPropertyList, ThatHoldsItselfIsRefused) {
    EXPECT_THAT(refusalOf(binary({"\xA1\x00"s})), HasSubstr("too deeply"));
    EXPECT_THAT(refusalOf(binary({"\xA2\x00\x00"s})), HasSubstr("too deeply"));
    EXPECT_THAT(refusalOf(binary({"\xD1\x01\x00"s, "\x51k"})), HasSubstr("too deeply"));
}

TEST(BinaryPropertyList, ThatMultipliesItsContentsIsRefusedBeforeItTakesTheMemory) {
    std::vector<std::string> doubling;  // each of them holds the next one twice
    for (int i = 1; i < 60; ++i) {
        doubling.push_back("\xA2" + std::string(2, static_cast<char>(i)));
    }
    doubling.emplace_back("\x09");
    EXPECT_THAT(refusalOf(binary(doubling)), HasSubstr("more memory"));

    const std::string sharing = "\xAF\x11\x27\x10"s + std::string(10000, '\x01');
    const std::string large = "\x4F\x12\x00\x10\x00\x00"s + std::string(1 << 20, 'x');
    EXPECT_THAT(refusalOf(binary({sharing, large})), HasSubstr("more memory"));
}

TEST(BinaryPropertyList, WithACountBeyondItsBytesIsRefused) {
    for (const auto& count : {"\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s, "\x13\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s,
                              "\x13\x20\x00\x00\x00\x00\x00\x00\x00"s, "\x12\x00\xFF\xFF\xFF"s}) {
        for (const auto& marker : {"\x4F"s, "\x5F"s, "\x6F"s, "\xAF"s, "\xDF"s}) {
            EXPECT_THAT(refusalOf(binary({marker + count})), HasSubstr("reaches beyond"));
        }
    }
}

TEST(BinaryPropertyList, WithAReferenceToNothingIsRefused) {
    EXPECT_THAT(refusalOf(binary({"\xA1\x07"})), HasSubstr("does not exist"));
}

TEST(BinaryPropertyList, WithADamagedTrailerIsRefused) {
    const std::string whole = binary({"\x51x"});
    const auto with = [&](std::size_t fromEnd, char byte) {
        std::string damaged = whole;
        damaged[damaged.size() - fromEnd] = byte;
        return refusalOf(damaged);
    };
    EXPECT_THAT(with(26, '\0'), HasSubstr("trailer"));  // size of an offset
    EXPECT_THAT(with(26, '\x09'), HasSubstr("trailer"));
    EXPECT_THAT(with(25, '\0'), HasSubstr("trailer"));    // size of a reference
    EXPECT_THAT(with(24, '\x7F'), HasSubstr("trailer"));  // number of objects
    EXPECT_THAT(with(9, '\x01'), HasSubstr("trailer"));   // root
    EXPECT_THAT(with(1, '\x00'), HasSubstr("trailer"));   // offset of the table
    EXPECT_THAT(with(8, '\xFF'), HasSubstr("trailer"));
}

TEST(BinaryPropertyList, CutShortAnywhereIsRefused) {
    const std::string whole = convertedByLibplist(serialized(everyKind()));

    for (std::size_t length = std::string("bplist0").size(); length < whole.size(); ++length) {
        ASSERT_NE(refusalOf(whole.substr(0, length)), "") << length;
    }
}

TEST(BinaryPropertyList, WithRandomDamageIsReadOrRefusedButNeverCrashes) {
    const std::string whole = convertedByLibplist(serialized(everyKind()));
    std::mt19937 random(20261121);  // NOLINT(bugprone-*): the same damage in every run
    int refused = 0;
    constexpr int rounds = 5000;
    for (int round = 0; round < rounds; ++round) {
        std::string damaged = whole;
        for (int i = 0; i < 3; ++i) {
            damaged[8 + random() % (damaged.size() - 8)] = static_cast<char>(random());
        }
        refused += refusalOf(damaged).empty() ? 0 : 1;
    }
    EXPECT_GT(refused, 0);
    EXPECT_LT(refused, rounds);
}

}  // namespace
