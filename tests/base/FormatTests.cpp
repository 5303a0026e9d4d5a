#include "lib/base/Format.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <limits>
#include <string>

#include "tests/fakes/CommaLocale.h"

namespace {

using kz::format;

TEST(Formatting, PutsTextWhereAnObjectIsAskedFor) { EXPECT_EQ(format("<%@>", std::string("a b")), "<a b>"); }

TEST(Formatting, PutsTextWhereACStringIsAskedFor) { EXPECT_EQ(format("<%s>", "a b"), "<a b>"); }

TEST(Formatting, ShowsIntegersOfEveryLength) {
    EXPECT_EQ(format("%i %d %u %li %lu %llu %zu", -1, 2, 3U, -4L, 5UL, 6ULL, std::size_t{7}), "-1 2 3 -4 5 6 7");
}

TEST(Formatting, NeverCutsANumberToTheLengthOfItsConversion) {
    EXPECT_EQ(format("%i", std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(format("%u", std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
}

TEST(Formatting, ShowsRealsWithSixDecimalsUnlessToldOtherwise) { EXPECT_EQ(format("%f", 2.5), "2.500000"); }

TEST(Formatting, RoundsRealsToThePrecision) {
    EXPECT_EQ(format("%0.2f", 1.005 * 1000), "1005.00");
    EXPECT_EQ(format("%0.2f", 7.999), "8.00");
    EXPECT_EQ(format("%0.0f", 2.6), "3");
    EXPECT_EQ(format("%.3f", -0.0005), "-0.001");
}

TEST(Formatting, PadsToTheWidth) {
    EXPECT_EQ(format("<%5i>", 42), "<   42>");
    EXPECT_EQ(format("<%-5i>", 42), "<42   >");
    EXPECT_EQ(format("<%05i>", -42), "<-0042>");
    EXPECT_EQ(format("<%7.2f>", 3.14159), "<   3.14>");
    EXPECT_EQ(format("<%07.2f>", -3.14159), "<-003.14>");
    EXPECT_EQ(format("<%6s>", "ab"), "<    ab>");
}

TEST(Formatting, FillsUpToTheLeastNumberOfDigits) {
    EXPECT_EQ(format("<%.4i>", -42), "<-0042>");
    EXPECT_EQ(format("<%06.4i>", 42), "<  0042>");
}

TEST(Formatting, CountsTheWidthOfTextInCharacters) { EXPECT_EQ(format("<%4s>", "é"), "<   é>"); }

TEST(Formatting, CutsTextToThePrecisionBetweenCharacters) {
    EXPECT_EQ(format("%.2s", "éàü"), "éà");
    EXPECT_EQ(format("<%.1s>", "🎹"), "<>");
}

TEST(Formatting, ShowsHexadecimalDigits) { EXPECT_EQ(format("%02x%02X %x", 10, 171, 255U), "0aAB ff"); }

TEST(Formatting, ShowsTheSignThatAFlagAsksFor) { EXPECT_EQ(format("%+i % i %+i", 1, 2, -3), "+1  2 -3"); }

TEST(Formatting, ShowsCharacters) {
    EXPECT_EQ(format("%c%c", 'x', 0x263A), "x☺");
    EXPECT_EQ(format("%i", 'A'), "65");
}

TEST(Formatting, ShowsOnePercentSignForTwo) { EXPECT_EQ(format("100%% of %i", 3), "100% of 3"); }

TEST(Formatting, ShowsNullForAMissingText) {
    const char* const noText = nullptr;
    EXPECT_EQ(format("%s %@ %@", noText, std::optional<std::string>{}, std::nullopt), "(null) (null) (null)");
}

TEST(Formatting, ShowsDatesAndPropertyValuesByTheirDescription) {
    const platform::Date date{std::chrono::seconds(0)};
    EXPECT_EQ(format("%@", date), "1970-01-01 00:00:00 +0000");
    EXPECT_EQ(format("%@", platform::PropertyValue{.value = true}), "1");
    EXPECT_EQ(format("%@", std::optional<platform::PropertyValue>{}), "(null)");
}

TEST(Formatting, ShowsAnArgumentThatDoesNotFitItsConversionAllTheSame) {
    EXPECT_EQ(format("%i", "text"), "text");
    EXPECT_EQ(format("%s", 42), "42");
    EXPECT_EQ(format("%@", 2.5), "2.5");
    EXPECT_EQ(format("%0.1f", 3), "3.0");
    EXPECT_EQ(format("%u", -1), "-1");
}

TEST(Formatting, KeepsAConversionThatHasNoArgument) {
    EXPECT_EQ(format("%s and %0.2f"), "%s and %0.2f");
    EXPECT_EQ(format("%@%@%@", "one"), "one%@%@");
}

TEST(Formatting, IgnoresArgumentsThatNoConversionAsksFor) { EXPECT_EQ(format("a %i", 1, 2, "three"), "a 1"); }

TEST(Formatting, KeepsALonePercentSignAtTheEnd) { EXPECT_EQ(format("50%", 1), "50%"); }

TEST(Formatting, KeepsWhatIsNoConversion) { EXPECT_EQ(format("%n %y %1$@ %*i %", 7, 8), "%n %y %1$@ %*i %"); }

TEST(Formatting, ReadsOnBehindAPercentSignThatIsNoConversion) { EXPECT_EQ(format("%5%@", "x"), "%@"); }

TEST(Formatting, LimitsAHostileWidth) {
    EXPECT_EQ(format("%999999999d", 1).size(), 1024U);
    EXPECT_EQ(format("%99999999999999999999999999s", "x").size(), 1024U);
}

TEST(Formatting, LimitsAHostilePrecision) {
    EXPECT_EQ(format("%.999999999f", 1.0).size(), 1024U + 2);
    EXPECT_EQ(format("%.999999999f", -std::numeric_limits<double>::max()).size(), 1U + 309 + 1 + 1024);
}

TEST(Formatting, ShowsRealsThatAreNoNumbers) {
    EXPECT_EQ(format("%f %05f", std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()),
              "inf  -inf");
}

TEST(Formatting, CarriesAMegabyteOfTextAndOfPercentSigns) {
    const std::string text(1 << 20, 'x');
    EXPECT_EQ(format("%@", text), text);
    std::string hostile;
    for (int part = 0; part < 300000; ++part) {
        hostile += "%9d";
    }
    EXPECT_EQ(format(hostile), hostile);
}

TEST(Formatting, KeepsNulCharactersOfTexts) {
    const std::string text("a\0b", 3);
    EXPECT_EQ(format("%@", text), text);
}

TEST(Formatting, ShowsADecimalPointInEveryLocale) {
    const fakes::CommaLocale locale;
    if (!locale.there()) {
        GTEST_SKIP() << "there is no locale with a comma, and no localedef to make one";
    }
    EXPECT_EQ(format("%0.1f", 1.5), "1.5");
}

}  // namespace
