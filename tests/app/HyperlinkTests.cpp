#include <gtest/gtest.h>

#include "app/NSString+Hyperlink.h"

TEST(Hyperlink, IsBlueAndUnderlinedOverItsWholeLength) {
    const auto link = hyperlinkFromString("Read on…", "https://www.example.org/a?b=c");
    ASSERT_EQ(link.size(), 1U);
    EXPECT_EQ(link[0].text, "Read on…");
    EXPECT_EQ(link[0].link, "https://www.example.org/a?b=c");
    EXPECT_EQ(link[0].color, platform::TextColor::blue);
    EXPECT_EQ(link[0].underline, platform::UnderlineStyle::single);
}
