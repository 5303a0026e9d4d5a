#include <gtest/gtest.h>

#include <QPalette>
#include <QTextBlock>
#include <QTextTable>
#include <cmath>

#include "platform/linux/qt/agreement/AgreementLiterals.h"
#include "platform/linux/qt/agreement/HtmlDocument.h"
#include "tests/qt/AgreementText.h"

namespace {

using platform::qt::operator""_L1;  // NOLINT(misc-unused-using-decls): the check overlooks literals
using platform::qt::operator""_s;   // NOLINT(misc-unused-using-decls): the check overlooks literals

using agreement_tests::formatOf;
using platform::qt::applyStandardTextColor;

struct Colors {
    QLatin1String base;
    QLatin1String text;
    QLatin1String link;
};

QPalette palette(const Colors& colors) {
    QPalette result;
    result.setColor(QPalette::Base, QColor(colors.base));
    result.setColor(QPalette::Text, QColor(colors.text));
    result.setColor(QPalette::Link, QColor(colors.link));
    return result;
}

QPalette light() { return palette({"#ffffff"_L1, "#000000"_L1, "#0000ff"_L1}); }
QPalette dark() { return palette({"#1e1e1e"_L1, "#eeeeee"_L1, "#0000ff"_L1}); }

double channel(double value) { return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4); }

double contrast(const QColor& a, const QColor& b) {
    const auto luminance = [](const QColor& c) {
        return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) + 0.0722 * channel(c.blueF());
    };
    return (std::max(luminance(a), luminance(b)) + 0.05) / (std::min(luminance(a), luminance(b)) + 0.05);
}

std::unique_ptr<QTextDocument> colored(const char* html, const QPalette& colors) {
    auto document = std::make_unique<platform::qt::AgreementTextDocument>();
    platform::qt::fillFromHtml(*document, QString::fromUtf8(html), "/nonexistent");
    applyStandardTextColor(*document, colors);
    return document;
}

TEST(AgreementColors, TakeTheColoursOfTheTextAway) {
    const auto document = colored("<p style='color:#fff'>white <span style='color:#000'>black</span></p>", dark());
    EXPECT_FALSE(formatOf(*document, "white").hasProperty(QTextFormat::ForegroundBrush));
    EXPECT_FALSE(formatOf(*document, "black").hasProperty(QTextFormat::ForegroundBrush));
}

TEST(AgreementColors, TakeTheColoursOfListMarksAway) {
    const auto document = colored("<ul><li style='color:#fff'>white</li></ul>", light());
    EXPECT_FALSE(document->lastBlock().charFormat().hasProperty(QTextFormat::ForegroundBrush));
}

TEST(AgreementColors, KeepAHighlightOnWhichTextCanBeRead) {
    EXPECT_EQ(formatOf(*colored("<span style='background:#ffff00'>mark</span>", light()), "mark").background().color(),
              QColor(255, 255, 0));
}

TEST(AgreementColors, TakeAHighlightAwayOnWhichTextCannotBeRead) {
    const char* html = "<span style='background:#ffff00'>mark</span>";
    EXPECT_FALSE(formatOf(*colored(html, dark()), "mark").hasProperty(QTextFormat::BackgroundBrush));
}

TEST(AgreementColors, TakeBackgroundsOfParagraphsCellsAndPagesAwayLikewise) {
    const auto document = colored(
        "<body bgcolor='#000000'><p style='background:#111111'>para</p><table><tr><td "
        "bgcolor='#000000'>cell</td></tr></table>",
        light());
    EXPECT_FALSE(document->find(u"para"_s).blockFormat().hasProperty(QTextFormat::BackgroundBrush));
    QTextCursor cell = document->find(u"cell"_s);
    ASSERT_NE(cell.currentTable(), nullptr);
    EXPECT_FALSE(cell.currentTable()->cellAt(cell).format().hasProperty(QTextFormat::BackgroundBrush));
    EXPECT_FALSE(document->rootFrame()->frameFormat().hasProperty(QTextFormat::BackgroundBrush));
}

TEST(AgreementColors, GiveLinksAContrastThatCanBeRead) {
    for (const QPalette& colors : {light(), dark(), palette({"#777777"_L1, "#000000"_L1, "#7777aa"_L1}),
                                   palette({"#ffffff"_L1, "#000000"_L1, "#ffffff"_L1})}) {
        const auto document = colored("<a href='https://example.org' style='color:#eee'>link</a>", colors);
        const QTextCharFormat format = formatOf(*document, "link");
        EXPECT_GE(contrast(format.foreground().color(), colors.color(QPalette::Base)), 4.5);
        EXPECT_TRUE(format.fontUnderline());
    }
}

TEST(AgreementColors, FollowAPaletteThatChanges) {
    const auto document = colored("<a href='https://example.org'>link</a>", dark());
    applyStandardTextColor(*document, light());
    EXPECT_EQ(formatOf(*document, "link").foreground().color(), QColor(0, 0, 255));
}

TEST(AgreementColors, LeaveTheTextAndItsStyleAsTheyAre) {
    auto document = agreement_tests::richText(
        "{\\rtf1{\\colortbl;\\red9\\green9\\blue9;}\\trowd\\clmgf\\cellx900\\clmrg\\cellx1800\\intbl\\cf1\\b "
        "x\\cell\\cell\\row\\pard\\i y}");
    const std::string before = agreement_tests::plain(*document);
    applyStandardTextColor(*document, dark());
    EXPECT_EQ(agreement_tests::plain(*document), before);
    EXPECT_EQ(formatOf(*document, "x").fontWeight(), QFont::Bold);
    EXPECT_TRUE(formatOf(*document, "y").fontItalic());
}

}  // namespace
