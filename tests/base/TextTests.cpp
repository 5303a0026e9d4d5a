#include "lib/base/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>

#include "lib/base/LowercaseTable.h"

namespace {

TEST(TextLength, CountsUTF16Units) {
    EXPECT_EQ(kz::lengthInUTF16(""), 0U);
    EXPECT_EQ(kz::lengthInUTF16("plain text that is longer than a word"), 37U);
    EXPECT_EQ(kz::lengthInUTF16("é☺"), 2U);
    EXPECT_EQ(kz::lengthInUTF16("🎹"), 2U);
    EXPECT_EQ(kz::lengthInUTF16("e\u0301"), 2U);
}

TEST(TextLength, CountsEachByteThatIsNoTextAsOne) {
    EXPECT_EQ(kz::lengthInUTF16("\xFF\xFE"), 2U);
    EXPECT_EQ(kz::lengthInUTF16("\xC0\x80"), 2U);          // overlong
    EXPECT_EQ(kz::lengthInUTF16("\xED\xA0\x80"), 3U);      // a surrogate
    EXPECT_EQ(kz::lengthInUTF16("\xF4\x90\x80\x80"), 4U);  // beyond the last code point
    EXPECT_EQ(kz::lengthInUTF16("\xE2\x98"), 2U);          // cut short
}

TEST(Texts, AreASCIIWithNoByteBeyondIt) {
    EXPECT_TRUE(kz::isASCII(""));
    EXPECT_TRUE(kz::isASCII("12345678\x7F"));
    EXPECT_FALSE(kz::isASCII("é12345678"));
    EXPECT_FALSE(kz::isASCII("12345678é"));
}

TEST(Texts, AreUTF8WhenEachOfTheirCharactersIs) {
    EXPECT_TRUE(kz::isUTF8(""));
    EXPECT_TRUE(kz::isUTF8("plain"));
    EXPECT_TRUE(kz::isUTF8("é🎹"));
    EXPECT_FALSE(kz::isUTF8("é\xFF"));
    EXPECT_FALSE(kz::isUTF8("cut off \xF0\x9F"));
}

TEST(Trimming, TakesBlanksAndNewlinesFromBothEnds) {
    EXPECT_EQ(kz::trimWhitespaceAndNewlines(" \t\r\n\v\f a b \n"), "a b");
    EXPECT_EQ(kz::trimWhitespaceAndNewlines("a"), "a");
    EXPECT_EQ(kz::trimWhitespaceAndNewlines(" \n "), "");
    EXPECT_EQ(kz::trimWhitespaceAndNewlines(""), "");
}

TEST(Trimming, TakesUnicodeWhiteSpaceToo) {
    EXPECT_EQ(kz::trimWhitespaceAndNewlines("\u00A0\u2003\u3000a\u0085\u2028\u2029\u1680\u202F\u205F"), "a");
}

TEST(Trimming, LeavesZeroWidthCharactersAndOtherBytes) {
    EXPECT_EQ(kz::trimWhitespaceAndNewlines("\u200Ba\uFEFF"), "\u200Ba\uFEFF");
    EXPECT_EQ(kz::trimWhitespaceAndNewlines("\xA0 a \x85"), "\xA0 a \x85");
    EXPECT_EQ(kz::trimWhitespaceAndNewlines("a\x80\x80 "), "a\x80\x80");
}

TEST(Lowercasing, LowersEveryAlphabet) {
    EXPECT_EQ(kz::lowercased("Read ME.TXT"), "read me.txt");
    EXPECT_EQ(kz::lowercased("ÀÉÎÕÜŸŁŽǄǅ"), "àéîõüÿłžǆǆ");
    EXPECT_EQ(kz::lowercased("ΑΒΓΔΣΩΆΏ"), "αβγδσωάώ");
    EXPECT_EQ(kz::lowercased("ЁЖЯѢӁ"), "ёжяѣӂ");
    EXPECT_EQ(kz::lowercased("ԱՖ"), "աֆ");
    EXPECT_EQ(kz::lowercased("ႠᏀẞＡ𐐀"), "ⴀꮐßａ𐐨");
}

TEST(Lowercasing, KeepsTheNumberOfCharacters) { EXPECT_EQ(kz::lowercased("İ"), "i"); }

TEST(Lowercasing, LeavesWhatHasNoLowerCase) {
    EXPECT_EQ(kz::lowercased("ß漢字 1🎹ı×"), "ß漢字 1🎹ı×");
    EXPECT_EQ(kz::lowercased("\xC0\xFF"
                             "A"),
              "\xC0\xFF"
              "a");
}

TEST(Lowercasing, HasItsRunsInOrderAndNeverOverlapping) {
    const auto* const misplaced =
        std::adjacent_find(std::begin(kz::lowercaseRuns), std::end(kz::lowercaseRuns),
                           [](const auto& run, const auto& next) { return run.last >= next.first; });
    EXPECT_EQ(misplaced, std::end(kz::lowercaseRuns));
}

TEST(Replacing, GoesFromLeftToRightOnce) {
    EXPECT_EQ(kz::replaceAll("aaa", "aa", "a"), "aa");
    EXPECT_EQ(kz::replaceAll("%%%%", "%%%", "%%"), "%%%");
    EXPECT_EQ(kz::replaceAll("abc", "", "x"), "abc");
    EXPECT_EQ(kz::replaceAll("", "a", "x"), "");
    EXPECT_EQ(kz::replaceAll("a/b/", "/", ":"), "a:b:");
}

TEST(Characters, SurviveEncodingAndDecoding) {
    for (const std::uint32_t codePoint :
         {0x0U, 0x7FU, 0x80U, 0x7FFU, 0x800U, 0xD7FFU, 0xE000U, 0xFFFFU, 0x10000U, 0x10FFFFU}) {
        std::string text;
        kz::appendCharacter(text, codePoint);
        const kz::DecodedCharacter decoded = kz::decodeCharacter(text);
        EXPECT_TRUE(decoded.valid && decoded.codePoint == codePoint && decoded.bytes == text.size()) << codePoint;
    }
}

TEST(Characters, ThatAreNoneBecomeTheReplacementCharacter) {
    std::string text;
    kz::appendCharacter(text, 0xD800);
    kz::appendCharacter(text, 0x110000);
    EXPECT_EQ(text, "\uFFFD\uFFFD");
}

}  // namespace
