#include "platform/macos/foundation/Utf8.h"

#include <gtest/gtest.h>

#include <string>

using platform::macos::repairedUtf8;

namespace {

const std::string mark = "\xEF\xBF\xBD";

TEST(RepairedText, IsTheSameWhenNothingIsWrong) {
    const std::string text = "Br\xC3\xBCnn \xE2\x82\xAC \xF0\x9F\x8E\xB5";
    EXPECT_EQ(repairedUtf8(text), text);
}

TEST(RepairedText, KeepsAZeroByte) { EXPECT_EQ(repairedUtf8(std::string("a\0b", 3)), std::string("a\0b", 3)); }

TEST(RepairedText, MarksAByteThatBeginsNothing) { EXPECT_EQ(repairedUtf8("a\xFF"), "a" + mark); }

TEST(RepairedText, MarksATrailWithoutALead) { EXPECT_EQ(repairedUtf8("\x80z"), mark + "z"); }

TEST(RepairedText, MarksWhatIsCutOffAtTheEnd) { EXPECT_EQ(repairedUtf8("a\xE2\x82"), "a" + mark + mark); }

TEST(RepairedText, GoesOnRightBehindALeadWithoutItsTrail) { EXPECT_EQ(repairedUtf8("\xC3z"), mark + "z"); }

TEST(RepairedText, MarksOverlongForms) {
    EXPECT_EQ(repairedUtf8("\xC0\xAF"), mark + mark);
    EXPECT_EQ(repairedUtf8("\xE0\x80\xAF"), mark + mark + mark);
    EXPECT_EQ(repairedUtf8("\xF0\x80\x80\xAF"), mark + mark + mark + mark);
}

TEST(RepairedText, MarksHalvesOfSurrogatePairs) { EXPECT_EQ(repairedUtf8("\xED\xA0\x80"), mark + mark + mark); }

TEST(RepairedText, MarksWhatLiesBeyondTheLastCharacter) {
    EXPECT_EQ(repairedUtf8("\xF4\x8F\xBF\xBF"), "\xF4\x8F\xBF\xBF");
    EXPECT_EQ(repairedUtf8("\xF4\x90\x80\x80"), mark + mark + mark + mark);
}

}  // namespace
