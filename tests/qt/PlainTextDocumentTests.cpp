#include "platform/linux/qt/agreement/PlainTextDocument.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/linux/qt/agreement/AgreementLiterals.h"
#include "platform/linux/qt/agreement/AgreementTextDocument.h"

namespace {

using platform::qt::operator""_s;  // NOLINT(misc-unused-using-decls): the check overlooks literals

std::string decoded(std::string_view bytes) {
    return platform::qt::decodePlainText(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())))
        .toStdString();
}

using std::string_view_literals::operator""sv;  // NOLINT(misc-unused-using-decls): the check overlooks literals

TEST(PlainText, IsUtf8) { EXPECT_EQ(decoded("Größe – 日本 😀"), "Größe – 日本 😀"); }

TEST(PlainText, IsReadByItsByteOrderMark) {
    EXPECT_EQ(decoded("\xEF\xBB\xBF\xC3\xA9"sv), "é");
    EXPECT_EQ(decoded("\xFF\xFE\xE9\0\x3D\xD8\0\xDE"sv), "é😀");
    EXPECT_EQ(decoded("\xFE\xFF\0\xE9\xD8\x3D\xDE\0"sv), "é😀");
    EXPECT_EQ(decoded("\xFF\xFE\0\0\xE9\0\0\0"sv), "é");
    EXPECT_EQ(decoded("\0\0\xFE\xFF\0\0\0\xE9"sv), "é");
}

TEST(PlainText, IsWindowsLatinWhenItIsNotUtf8) { EXPECT_EQ(decoded("caf\xE9 \x80 \x93q\x94"sv), "café € “q”"); }

TEST(PlainText, TakesAllLineEndingsForOne) { EXPECT_EQ(decoded("a\r\nb\rc\nd"), "a\nb\nc\nd"); }

TEST(PlainText, DropsNulsAndControls) { EXPECT_EQ(decoded("a\0b\x07\tc"sv), "ab\tc"); }

TEST(PlainText, IsEmptyWhenTheFileIs) {
    EXPECT_EQ(decoded(""), "");
    EXPECT_EQ(decoded("\xFF\xFE"sv), "");
}

TEST(PlainText, OfHalfACharacterKeepsWhatWasBeforeIt) { EXPECT_EQ(decoded("\xFF\xFE\x61\0\x62"sv).substr(0, 1), "a"); }

TEST(PlainText, IsCutAtTheLimitOfParagraphs) {
    platform::qt::AgreementTextDocument document;
    EXPECT_FALSE(platform::qt::fillFromPlainText(document, QString(1'000'000, u'\n')));
    EXPECT_EQ(document.blockCount(), platform::qt::kMaximumParagraphs);
}

TEST(PlainText, IsShownWholeWhenItIsShort) {
    platform::qt::AgreementTextDocument document;
    EXPECT_TRUE(platform::qt::fillFromPlainText(document, u"one\ntwo"_s));
    EXPECT_EQ(document.toPlainText(), u"one\ntwo"_s);
}

TEST(PlainText, ShowsTagsAsTheyStand) {
    platform::qt::AgreementTextDocument document;
    platform::qt::fillFromPlainText(document, u"<b>x</b>"_s);
    EXPECT_EQ(document.toPlainText(), u"<b>x</b>"_s);
}

}  // namespace
