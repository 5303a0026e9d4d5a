#include "platform/linux/services/propertylists/LinuxPropertyLists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <random>

#include "tests/linux/PropertyListFixture.h"

namespace {

using namespace std::string_literals;
using fixture::entryOf;
using fixture::refusalOf;
using fixture::text;
using fixture::valueOf;
using testing::HasSubstr;

std::string utf16(const std::u16string& units, bool bigEndian) {
    std::string bytes;
    for (const char16_t unit : units) {
        const auto high = static_cast<char>(unit >> 8U);
        const auto low = static_cast<char>(unit);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

constexpr const char16_t* xml16 = u"<?xml version=\"1.0\" encoding=\"UTF-16\"?><plist><string>Grüße 🎹</string></plist>";
constexpr const char16_t* text16 = u"\"Grüße\" = \"🎹\";";

TEST(PropertyListEncodings, IncludeUtf16OfBothOrdersWithAByteOrderMark) {
    for (const bool bigEndian : {true, false}) {
        EXPECT_EQ(valueOf(utf16(u"\uFEFF"s + xml16, bigEndian)), text("Grüße 🎹"));
        EXPECT_EQ(entryOf(utf16(u"\uFEFF"s + text16, bigEndian), "Grüße"), text("🎹"));
    }
}

TEST(PropertyListEncodings, IncludeUtf16OfBothOrdersWithoutAByteOrderMark) {
    for (const bool bigEndian : {true, false}) {
        EXPECT_EQ(valueOf(utf16(xml16, bigEndian)), text("Grüße 🎹"));
        EXPECT_EQ(entryOf(utf16(text16, bigEndian), "Grüße"), text("🎹"));
    }
}

TEST(PropertyListEncodings, IncludeUtf8WithAByteOrderMark) {
    EXPECT_EQ(valueOf("\xEF\xBB\xBF<plist><string>Grüße</string></plist>"), text("Grüße"));
    EXPECT_EQ(entryOf("\xEF\xBB\xBFkey = \"Grüße\";", "key"), text("Grüße"));
}

TEST(PropertyListEncodings, IncludeLatin1WhereTheXmlSaysSo) {
    EXPECT_EQ(valueOf("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><plist><string>Gr\xFC\xDF"
                      "e</string></plist>"),
              text("Grüße"));
}

TEST(PropertyListEncodings, OfAnyOtherKindAreRefused) {
    EXPECT_THAT(refusalOf("<plist><string>Gr\xFC\xDF"
                          "e</string></plist>"),
                HasSubstr("neither UTF-8 nor UTF-16"));
    EXPECT_THAT(refusalOf("\xFE\xFF\0"s), HasSubstr("neither UTF-8 nor UTF-16"));
    EXPECT_THAT(refusalOf("\xFF\xFE\0\0<\0\0\0"s), HasSubstr("cannot be read"));
}

TEST(PropertyLists, AreToldApartByTheirContent) {
    EXPECT_EQ(valueOf("<string>x</string>"), text("x"));
    EXPECT_EQ(valueOf("<dada>"), fixture::value(fixture::PropertyData{0xDA, 0xDA}));
    EXPECT_EQ(valueOf("bplist"), text("bplist"));
    EXPECT_THAT(refusalOf("bplist00"), HasSubstr("cut short"));
}

TEST(PropertyLists, ThatAreEmptyAreRefused) {
    EXPECT_THAT(refusalOf(""), HasSubstr("it is empty"));
    EXPECT_EQ(valueOf("\xEF\xBB\xBF"), fixture::value(fixture::PropertyDictionary{}));
}

TEST(PropertyLists, OfGarbageAreRefused) {
    std::mt19937 random(20261121);  // NOLINT(bugprone-*): the same garbage in every run
    for (int round = 0; round < 2000; ++round) {
        std::string garbage;
        for (std::size_t i = 0; i < 100; ++i) {
            garbage += static_cast<char>(random());
        }
        ASSERT_NE(refusalOf(garbage), "") << testing::PrintToString(garbage);
    }
}

TEST(PropertyLists, OfAHundredMegabytesOfGarbageAreRefused) {
    for (const char byte : {'\0', 'x', '<', '(', '"', '\xFF'}) {
        const std::string garbage(100'000'000, byte);  // NOLINT(bugprone-string-constructor): meant to be large
        const auto refusal = refusalOf(garbage);
        EXPECT_EQ(refusal.empty(), byte == 'x') << byte << refusal;  // which is one long word
    }
}

TEST(PropertyLists, SayWhatIsWrongInOneSentence) {
    const auto refusal = refusalOf("{\n a");

    EXPECT_THAT(refusal, testing::StartsWith("The property list cannot be read: "));
    EXPECT_THAT(refusal, testing::EndsWith(")"));
    EXPECT_EQ(refusal.find('\n'), std::string::npos);
}

}  // namespace
