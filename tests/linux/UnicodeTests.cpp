#include "platform/linux/services/propertylists/Unicode.h"

#include <gtest/gtest.h>

namespace {

using namespace std::string_view_literals;
using platform::linux_host::appendUtf8;
using platform::linux_host::ByteOrder;
using platform::linux_host::firstCodePoint;
using platform::linux_host::isUtf8;
using platform::linux_host::utf8FromUtf16;

std::string utf8Of(char32_t codePoint) {
    std::string text;
    appendUtf8(text, codePoint);
    return text;
}

TEST(Utf8, OfEveryCodePointReadsBack) {
    for (char32_t point = 0; point <= 0x10FFFF; point += point == 0xD7FF ? 0x801 : 1) {
        const auto text = utf8Of(point);
        const auto read = firstCodePoint(text);
        ASSERT_TRUE(read) << std::hex << static_cast<unsigned>(point);
        ASSERT_EQ(read->value, point);
        ASSERT_EQ(read->bytes, text.size());
    }
}

TEST(Utf8, OfNoCodePointIsTheReplacementCharacter) {
    EXPECT_EQ(utf8Of(0xD800), "\uFFFD");
    EXPECT_EQ(utf8Of(0xDFFF), "\uFFFD");
    EXPECT_EQ(utf8Of(0x110000), "\uFFFD");
    EXPECT_EQ(utf8Of(0xFFFFFFFF), "\uFFFD");
}

TEST(Utf8, IsNotOverlongASurrogateTooLargeOrCutShort) {
    for (const auto bytes :
         {"\xC0\x80"sv, "\xC1\xBF"sv, "\xE0\x9F\xBF"sv, "\xF0\x8F\xBF\xBF"sv, "\xED\xA0\x80"sv, "\xF4\x90\x80\x80"sv,
          "\xF5\x80\x80\x80"sv, "\x80"sv, "\xFF"sv, "\xE2\x82"sv, "\xE2"sv, "\xE2\x28\xA1"sv, ""sv}) {
        EXPECT_FALSE(firstCodePoint(bytes)) << testing::PrintToString(bytes);
    }
}

TEST(Utf8, IsCheckedToTheEndOfTheText) {
    EXPECT_TRUE(isUtf8(""));
    EXPECT_TRUE(isUtf8("Grüße 🎹"));
    EXPECT_FALSE(isUtf8("Grüße \xFC"));
}

TEST(Utf16, OfEitherByteOrderBecomesUtf8) {
    EXPECT_EQ(utf8FromUtf16("\0A\x20\xAC\xD8\x3C\xDF\xB9"sv, ByteOrder::bigEndian), "A€🎹");
    EXPECT_EQ(utf8FromUtf16("A\0\xAC\x20\x3C\xD8\xB9\xDF"sv, ByteOrder::littleEndian), "A€🎹");
}

TEST(Utf16, WithALoneSurrogateHasAReplacementCharacterInItsPlace) {
    EXPECT_EQ(utf8FromUtf16("\xD8\x3C\0A"sv, ByteOrder::bigEndian), "\uFFFDA");
    EXPECT_EQ(utf8FromUtf16("\xDF\xB9\0A"sv, ByteOrder::bigEndian), "\uFFFDA");
    EXPECT_EQ(utf8FromUtf16("\0A\xD8\x3C"sv, ByteOrder::bigEndian), "A\uFFFD");
}

TEST(Utf16, OfAnOddNumberOfBytesIsNone) { EXPECT_FALSE(utf8FromUtf16("\0A\0"sv, ByteOrder::bigEndian)); }

}  // namespace
