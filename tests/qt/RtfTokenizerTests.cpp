#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "platform/linux/qt/agreement/RtfTokenizer.h"

namespace {

using platform::qt::RtfToken;
using platform::qt::RtfTokenizer;
using Kind = RtfToken::Kind;

TEST(RtfTokens, AreBracesWordsAndText) {
    RtfTokenizer tokens("{\\b bold}");
    EXPECT_EQ(tokens.next().kind, Kind::groupOpen);
    EXPECT_EQ(tokens.next().text, "b");
    EXPECT_EQ(tokens.next().text, "bold");
    EXPECT_EQ(tokens.next().kind, Kind::groupClose);
    EXPECT_EQ(tokens.next().kind, Kind::end);
}

TEST(RtfTokens, OneBlankBelongsToTheWordBeforeItAndTheNextToTheText) {
    RtfTokenizer tokens("\\b  x");
    tokens.next();
    EXPECT_EQ(tokens.next().text, " x");
}

TEST(RtfTokens, AWordCarriesItsNumber) { EXPECT_EQ(RtfTokenizer("\\li-720x").next().value, -720); }

TEST(RtfTokens, AWordWithoutANumberCarriesNone) { EXPECT_FALSE(RtfTokenizer("\\par x").next().value); }

TEST(RtfTokens, AHyphenWithoutDigitsIsText) {
    RtfTokenizer tokens("\\b-x");
    EXPECT_FALSE(tokens.next().value);
    EXPECT_EQ(tokens.next().text, "-x");
}

TEST(RtfTokens, ANumberBeyondAnyRangeStaysAtItsEnd) {
    EXPECT_EQ(RtfTokenizer("\\li99999999999999999999").next().value, std::numeric_limits<int>::max());
    EXPECT_EQ(RtfTokenizer("\\li-99999999999999999999").next().value, -std::numeric_limits<int>::max());
}

TEST(RtfTokens, LineEndsAndNulsAreNoText) {
    RtfTokenizer tokens(std::string_view("\r\n\0a\nb", 6));
    EXPECT_EQ(tokens.next().text, "a");
    EXPECT_EQ(tokens.next().text, "b");
}

TEST(RtfTokens, AByteIsTwoHexadecimalDigitsInEitherCase) {
    EXPECT_EQ(RtfTokenizer("\\'e9").next().value, 0xE9);
    EXPECT_EQ(RtfTokenizer("\\'E9").next().value, 0xE9);
}

TEST(RtfTokens, AByteWithOddDigitsKeepsWhatCanBeRead) {
    RtfTokenizer one("\\'4g");
    EXPECT_EQ(one.next().value, 4);
    EXPECT_EQ(one.next().text, "g");
    EXPECT_EQ(RtfTokenizer("\\'zz").next().kind, Kind::symbol);
    EXPECT_EQ(RtfTokenizer("\\'").next().kind, Kind::symbol);
}

TEST(RtfTokens, BinaryBytesMayHoldAnything) {
    RtfTokenizer tokens("\\bin3 }{\\x");
    EXPECT_EQ(tokens.next().text, "}{\\");
    EXPECT_EQ(tokens.next().text, "x");
}

TEST(RtfTokens, BinaryBytesEndWithTheFile) {
    RtfTokenizer tokens("\\bin2000000000 abc");
    EXPECT_EQ(tokens.next().text, "abc");
    EXPECT_EQ(tokens.next().kind, Kind::end);
}

TEST(RtfTokens, ANegativeCountOfBinaryBytesIsNone) {
    RtfTokenizer tokens("\\bin-5 abc");
    EXPECT_TRUE(tokens.next().text.empty());
    EXPECT_EQ(tokens.next().text, "abc");
}

TEST(RtfTokens, ABackslashAtTheEndEndsTheText) { EXPECT_EQ(RtfTokenizer("\\").next().kind, Kind::end); }

TEST(RtfTokens, AWordOfAnyLengthIsCutIntoPiecesThatEnd) {
    const std::string endless = "\\" + std::string(100'000, 'a');
    RtfTokenizer tokens(endless);
    EXPECT_EQ(tokens.next().text.size(), 32U);
    EXPECT_EQ(tokens.next().kind, Kind::text);
    EXPECT_EQ(tokens.next().kind, Kind::end);
}

}  // namespace
