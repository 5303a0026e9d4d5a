#include "platform/linux/tools/archive/PrintableText.h"

#include <gtest/gtest.h>

using platform::linux_host::printableText;

namespace {

TEST(PrintableText, ShowsLettersOfAllScriptsAsTheyAre) {
    EXPECT_EQ(printableText("a “\xC3\xA9” \xF0\x9F\x8E\xB9 ~"), "a “\xC3\xA9” \xF0\x9F\x8E\xB9 ~");
    EXPECT_EQ(printableText(""), "");
}

TEST(PrintableText, ShowsControlCharactersAsNumbers) {
    EXPECT_EQ(printableText("\x1b]0;title\x07\n\x7f"), "\\x1b]0;title\\x07\\x0a\\x7f");
    EXPECT_EQ(printableText("\xC2\x9B\x31m"), "\\xc2\\x9b1m");
    EXPECT_EQ(printableText({"\0", 1}), "\\x00");
}

TEST(PrintableText, ShowsBytesThatAreNoUTF8AsNumbers) {
    EXPECT_EQ(printableText("\x9b\x31m\xE9"), "\\x9b1m\\xe9");
    EXPECT_EQ(printableText("\xC3"), "\\xc3");
}

}  // namespace
