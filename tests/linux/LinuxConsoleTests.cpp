#include "platform/linux/services/LinuxConsole.h"

#include <gtest/gtest.h>

#include "platform/linux/services/ConsoleText.h"

namespace {

using platform::linux_host::consoleLine;

TEST(ConsoleText, StaysAsItIsWhenItIsPlain) {
    EXPECT_EQ(consoleLine("Unable to remove “Grüße 🎹” (100 %)"), "Unable to remove “Grüße 🎹” (100 %)");
    EXPECT_EQ(consoleLine(""), "");
}

TEST(ConsoleText, CannotPassItselfOffAsAnotherLine) {
    EXPECT_EQ(consoleLine("a\nNov 21 root: b\r\tc"), "a\\nNov 21 root: b\\r\\tc");
    EXPECT_EQ(consoleLine("a\xC2\x85"
                          "b\u2028c\u2029d"),
              "a\\x85b\\u2028c\\u2029d");
}

TEST(ConsoleText, CannotCommandATerminal) {
    EXPECT_EQ(consoleLine(std::string("\x1B[2J\0\x7F\xC2\x9B", 8)), "\\x1B[2J\\x00\\x7F\\x9B");
}

TEST(ConsoleText, CannotTurnTheDirectionOfWriting) {
    EXPECT_EQ(consoleLine("a\u202Eb\u2066c\u200F"), "a\\u202Eb\\u2066c\\u200F");
}

TEST(ConsoleText, ShowsBytesThatAreNotText) { EXPECT_EQ(consoleLine("a\xFF\xC3"), "a\\xFF\\xC3"); }

std::string shownFor(const std::string& text) {
    testing::internal::CaptureStderr();
    platform::linux_host::LinuxConsole().log(text);
    return testing::internal::GetCapturedStderr();
}

TEST(Console, ShowsOneLineOnStandardError) { EXPECT_EQ(shownFor("moved a file"), "moved a file\n"); }

TEST(Console, ShowsTextWithPercentSignsAsItIs) { EXPECT_EQ(shownFor("100 %n %s"), "100 %n %s\n"); }

TEST(Console, ShowsALongTextWhole) {
    const std::string text(1'000'000, 'x');
    EXPECT_TRUE(shownFor(text) == text + "\n");
}

TEST(Console, ShowsSeveralLinesAsOne) { EXPECT_EQ(shownFor("a\nb"), "a\\nb\n"); }

}  // namespace
