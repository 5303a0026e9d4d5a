#include "tests/bundle/SettingsFixture.h"

namespace wickfield_bundle {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class CheckingBackgrounds : public CheckingSettings {};

TEST_F(CheckingBackgrounds, HasNothingToSayOfWhatEveryHostReads) {
    for (const char* head : {"\x89PNG\r\n", "\xFF\xD8\xFF\xE0", "GIF89a", "BM"}) {
        background(head);
        EXPECT_THAT(rules(), IsEmpty()) << head;
    }
}

TEST_F(CheckingBackgrounds, WarnsOfKindsThatOneHostReads) {
    for (const std::string& head : {std::string("II*\0", 4), std::string("RIFF\0\0\0\0WEBP", 12), std::string("8BPS"),
                                    std::string("\0\0\0\x18"
                                                "ftypheic",
                                                12),
                                    std::string("icns"), std::string("%PDF-1.4"), std::string("/* XPM */"),
                                    std::string("P6\n1 1\n"), std::string("<?xml version='1.0'?><svg>")}) {
        background(head);
        EXPECT_THAT(rules(), ElementsAre("background-one-host")) << head;
        answer(R"({"ok":false,"reason":"Unsupported image format"})");
        EXPECT_THAT(rules(), ElementsAre("background-one-host")) << head;
        answer(R"({"ok":true,"width":960,"height":540})");
    }
}

TEST_F(CheckingBackgrounds, CallsOneThatCannotBeReadAnError) {
    background("\x89PNG\r\n");
    answer(R"({"ok":false,"reason":"Unable to read image data"})");
    EXPECT_THAT(rules(), ElementsAre("background-unreadable"));
    background("just a text");
    EXPECT_THAT(rules(), ElementsAre("background-unreadable"));
}

TEST_F(CheckingBackgrounds, WarnsOfSmallAndLargeOnes) {
    background("\x89PNG\r\n");
    answer(R"({"ok":true,"width":320,"height":200})");
    EXPECT_THAT(rules(), ElementsAre("background-small"));
    EXPECT_EQ(theReason(), "It has 320 by 200 pixels.");
    answer(R"({"ok":true,"width":8000,"height":200})");
    EXPECT_THAT(rules(), ElementsAre("background-large"));
    answer(R"({"ok":true,"width":660,"height":240})");
    EXPECT_THAT(rules(), IsEmpty());
}

TEST_F(CheckingBackgrounds, CallsAFolderOrAPipeUnreadable) {
    settings({{"KZBgImagePath", "<string>Back.png</string>"}});
    folder("Contents/Resources/Back.png");
    EXPECT_THAT(rules(), ElementsAre("background-unreadable"));
    std::filesystem::remove(bundle() + "/Contents/Resources/Back.png");
    ASSERT_EQ(::mkfifo((bundle() + "/Contents/Resources/Back.png").c_str(), 0644), 0);
    EXPECT_THAT(rules(), Contains("background-unreadable"));
}

TEST_F(CheckingBackgrounds, SaysThatTheHelperIsMissing) {
    background("\x89PNG\r\n");
    noHelper();
    EXPECT_THAT(rules(), ElementsAre("not-checked"));
}

}  // namespace
}  // namespace wickfield_bundle
