#include "lib/base/RealText.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include "tests/fakes/CommaLocale.h"

namespace {

TEST(RealText, RoundsToTheDecimalsAskedFor) {
    EXPECT_EQ(kz::fixedReal(2.675, 1), "2.7");
    EXPECT_EQ(kz::fixedReal(-0.04, 1), "-0.0");
    EXPECT_EQ(kz::fixedReal(999.996, 2), "1000.00");
    EXPECT_EQ(kz::fixedReal(12.5, 0), "12");
}

TEST(RealText, WritesTheLargestNumberInFull) {
    const std::string text = kz::fixedReal(std::numeric_limits<double>::max(), 3);
    EXPECT_EQ(text.size(), 309 + 4U);
    EXPECT_EQ(std::strtod(text.c_str(), nullptr), std::numeric_limits<double>::max());
}

TEST(RealText, NamesWhatIsNoNumber) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(kz::fixedReal(-infinity, 2), "-inf");
    EXPECT_EQ(kz::shortestReal(infinity), "inf");
    EXPECT_EQ(kz::shortestReal(std::numeric_limits<double>::quiet_NaN()), "nan");
}

TEST(RealText, UsesNoMoreDigitsThanReadBackAsTheSameNumber) {
    EXPECT_EQ(kz::shortestReal(0.1), "0.1");
    EXPECT_EQ(kz::shortestReal(1.0 / 3), "0.3333333333333333");
    EXPECT_EQ(kz::shortestReal(-0.0), "-0");
    EXPECT_EQ(kz::shortestReal(42), "42");
    EXPECT_EQ(kz::shortestReal(5e-324), "5e-324");
}

TEST(RealText, TakesTheShorterOfTheTwoWaysToWriteANumber) {
    EXPECT_EQ(kz::shortestReal(10000), "10000");
    EXPECT_EQ(kz::shortestReal(100000), "1e+05");
    EXPECT_EQ(kz::shortestReal(0.001), "0.001");
    EXPECT_EQ(kz::shortestReal(0.00001), "1e-05");
    EXPECT_EQ(kz::shortestReal(1e23), "1e+23");
}

#ifdef __cpp_lib_to_chars
TEST(RealText, AgreesWithTheStandardLibraryOnNumbersOfEverySize) {
    const auto reference = [](double number) {
        char digits[512];
        return std::string(digits, std::to_chars(std::begin(digits), std::end(digits), number).ptr);
    };
    std::mt19937_64 bits(20);
    for (int round = 0; round < 4000; ++round) {
        const auto any = std::bit_cast<double>(bits());
        const double common = static_cast<double>(static_cast<std::int64_t>(bits()) >> (round % 60)) / 1000;
        if (std::isfinite(any)) {
            ASSERT_EQ(kz::shortestReal(any), reference(any));
        }
        ASSERT_EQ(kz::shortestReal(common), reference(common));
    }
}
#endif

TEST(RealText, WritesAPointInALocaleThatHasAComma) {
    const fakes::CommaLocale locale;
    if (!locale.there()) {
        GTEST_SKIP() << "there is no locale with a comma, and no localedef to make one";
    }
    ASSERT_STREQ(std::localeconv()->decimal_point, ",");
    EXPECT_EQ(kz::fixedReal(1234.5, 2), "1234.50");
    EXPECT_EQ(kz::shortestReal(2.5), "2.5");
    EXPECT_EQ(kz::shortestReal(1.25e-30), "1.25e-30");
}

}  // namespace
