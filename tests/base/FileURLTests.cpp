#include "lib/base/FileURL.h"

#include <gtest/gtest.h>

TEST(FileURL, KeepsPlainPaths) { EXPECT_EQ(kz::fileURLWithPath("/a/b-c_d.txt"), "file:///a/b-c_d.txt"); }

TEST(FileURL, EncodesBlanksAndWhatAddressesReserve) {
    EXPECT_EQ(kz::fileURLWithPath("/a b/100%#?;[x]"), "file:///a%20b/100%25%23%3F%3B%5Bx%5D");
}

TEST(FileURL, EncodesEveryByteOfOtherCharacters) { EXPECT_EQ(kz::fileURLWithPath("/é\n\xFF"), "file:///%C3%A9%0A%FF"); }
