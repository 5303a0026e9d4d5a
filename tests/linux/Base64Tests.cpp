#include "platform/linux/services/propertylists/Base64.h"

#include <gtest/gtest.h>

namespace {

using platform::PropertyData;
using platform::linux_host::base64;
using platform::linux_host::dataFromBase64;

PropertyData bytes(std::string_view text) { return {text.begin(), text.end()}; }

TEST(Base64, WritesPadding) {
    EXPECT_EQ(base64(bytes("")), "");
    EXPECT_EQ(base64(bytes("f")), "Zg==");
    EXPECT_EQ(base64(bytes("fo")), "Zm8=");
    EXPECT_EQ(base64(bytes("foo")), "Zm9v");
    EXPECT_EQ(base64(bytes("foob")), "Zm9vYg==");
}

TEST(Base64, ReadsBackWhatItWrote) {
    PropertyData data;
    for (int length = 0; length < 300; ++length) {
        EXPECT_EQ(dataFromBase64(base64(data)), data);
        data.push_back(static_cast<std::uint8_t>(length * 37));
    }
}

TEST(Base64, IgnoresBlanksAndLineBreaks) { EXPECT_EQ(dataFromBase64(" Zm\n\t9v\r\nYg = =\n"), bytes("foob")); }

TEST(Base64, DoesNotInsistOnPadding) {
    EXPECT_EQ(dataFromBase64("Zg"), bytes("f"));
    EXPECT_EQ(dataFromBase64("Zm8"), bytes("fo"));
}

TEST(Base64, RefusesWhatItCannotBe) {
    for (const char* text : {"Z", "Zm9vY", "Zm-v", "Zg===", "Zg=", "=", "====", "Zg==Zg==", "Zm9v\xC3\xA9"}) {
        EXPECT_EQ(dataFromBase64(text), std::nullopt) << text;
    }
}

}  // namespace
