#include "platform/linux/qt/agreement/RtfWriter.h"

#include <gtest/gtest.h>

#include <QFontInfo>
#include <QTextBlock>
#include <QTextTable>

#include "platform/linux/qt/agreement/RtfGrid.h"
#include "tests/qt/AgreementText.h"

namespace {

using agreement_tests::formatOf;
using agreement_tests::plain;
using agreement_tests::richText;
using agreement_tests::smallPng;

const QTextTable* tableOf(const QTextDocument& document) {
    const QList<QTextFrame*> frames = document.rootFrame()->childFrames();
    return frames.isEmpty() ? nullptr : qobject_cast<QTextTable*>(frames.front());
}

std::string pictureGroup(const std::string& kind) {
    return "{\\pict" + kind + " " + smallPng().toHex().toStdString() + "}";
}

TEST(RichTextPage, ShowsStyles) {
    const auto document =
        richText("{\\rtf1{\\b bold}{\\i italic}{\\ul lined}{\\strike struck}{\\super up}{\\fs40 big}}");
    EXPECT_EQ(formatOf(*document, "bold").fontWeight(), QFont::Bold);
    EXPECT_TRUE(formatOf(*document, "italic").fontItalic());
    EXPECT_TRUE(formatOf(*document, "lined").fontUnderline());
    EXPECT_TRUE(formatOf(*document, "struck").fontStrikeOut());
    EXPECT_EQ(formatOf(*document, "up").verticalAlignment(), QTextCharFormat::AlignSuperScript);
    EXPECT_EQ(formatOf(*document, "big").fontPointSize(), 20);
}

TEST(RichTextPage, ShowsColoursAndHighlights) {
    const auto document = richText(
        "{\\rtf1{\\colortbl;\\red255\\green0\\blue0;\\red255\\green255\\blue0;}{\\cf1 red}{\\highlight2 mark}}");
    EXPECT_EQ(formatOf(*document, "red").foreground().color(), QColor(Qt::red));
    EXPECT_EQ(formatOf(*document, "mark").background().color(), QColor(Qt::yellow));
}

TEST(RichTextPage, KeepsPrintLegibleAndLettersOnThePage) {
    const auto document = richText("{\\rtf1{\\fs2 tiny}{\\fs3000 huge}}");
    EXPECT_EQ(formatOf(*document, "tiny").fontPointSize(), 7);
    EXPECT_EQ(formatOf(*document, "huge").fontPointSize(), 48);
}

TEST(RichTextPage, TakesFontsOfThisHostForThoseItNames) {
    const auto document =
        richText("{\\rtf1{\\fonttbl{\\f1\\fmodern Courier;}{\\f2\\froman Times-Roman;}}{\\f1 fixed}{\\f2 serif}}");
    EXPECT_TRUE(QFontInfo(formatOf(*document, "fixed").font()).fixedPitch());
    EXPECT_FALSE(QFontInfo(formatOf(*document, "serif").font()).fixedPitch());
    EXPECT_NE(QFontInfo(formatOf(*document, "serif").font()).family(), QFontInfo(QFont()).family());
}

TEST(RichTextPage, TakesTheWeightFromTheNameOfAFont) {
    const auto document = richText("{\\rtf1{\\fonttbl{\\f1\\fswiss Helvetica-BoldOblique;}}{\\f1 heavy}}");
    EXPECT_EQ(formatOf(*document, "heavy").fontWeight(), QFont::Bold);
    EXPECT_TRUE(formatOf(*document, "heavy").fontItalic());
}

TEST(RichTextPage, HangsTheMarkOfAListLeftOfItsText) {
    const auto document = richText("{\\rtf1\\li720\\fi-720\\tx220\\tx720{\\listtext\t\\bullet\t}item\\par}");
    const QTextBlockFormat format = document->firstBlock().blockFormat();
    EXPECT_DOUBLE_EQ(format.leftMargin(), -format.textIndent());
    ASSERT_FALSE(format.tabPositions().isEmpty());
    EXPECT_DOUBLE_EQ(format.tabPositions().back().position, format.leftMargin());
}

TEST(RichTextPage, NeverBeginsALineLeftOfThePage) {
    const auto document = richText("{\\rtf1\\li200\\fi-9000 x\\par}");
    const QTextBlockFormat format = document->firstBlock().blockFormat();
    EXPECT_GE(format.leftMargin() + format.textIndent(), 0);
}

TEST(RichTextPage, AddsTheSpacesOfNeighbouringParagraphs) {
    const auto document = richText("{\\rtf1\\sa200 a\\par\\pard\\sb100 b\\par}");
    const auto apart = richText("{\\rtf1\\pard a\\par\\pard\\sb300 b\\par}");
    EXPECT_DOUBLE_EQ(document->lastBlock().blockFormat().topMargin(), apart->lastBlock().blockFormat().topMargin());
}

TEST(RichTextPage, ShowsATableWithItsSpansAndShades) {
    const auto document = richText(
        "{\\rtf1{\\colortbl;\\red200\\green200\\blue200;}"
        "\\trowd\\clcbpat1\\clmgf\\cellx1000\\clmrg\\cellx2000\\clvmgf\\cellx3000\\intbl wide\\cell\\cell "
        "tall\\cell\\row"
        "\\trowd\\cellx1000\\cellx2000\\clvmrg\\cellx3000\\intbl a\\cell b\\cell\\cell\\row}");
    const QTextTable* table = tableOf(*document);
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->cellAt(0, 0).columnSpan(), 2);
    EXPECT_EQ(table->cellAt(0, 2).rowSpan(), 2);
    EXPECT_EQ(table->cellAt(0, 0).format().background().color(), QColor(200, 200, 200));
}

TEST(RichTextPage, AlignsRowsOfDifferentWidths) {
    const auto document = richText(
        "{\\rtf1\\trowd\\cellx1000\\cellx3000\\intbl a\\cell b\\cell\\row\\trowd\\cellx2000\\cellx3000\\intbl c\\cell "
        "d\\cell\\row}");
    const QTextTable* table = tableOf(*document);
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->columns(), 3);
    EXPECT_EQ(table->cellAt(0, 1).columnSpan(), 2);
    EXPECT_EQ(table->cellAt(1, 0).columnSpan(), 2);
}

TEST(RichTextPage, WritesATableThatIsTooLargeAsLines) {
    std::string text = "{\\rtf1 ";
    for (int row = 0; row < 1000; ++row) {
        text += "\\trowd";
        for (int cell = 1; cell <= 30; ++cell) {
            text += "\\cellx" + std::to_string(cell * 300);
        }
        text += "\\intbl first\\cell last\\cell\\row";
    }
    const auto document = richText(text + "}");
    EXPECT_EQ(tableOf(*document), nullptr);
    EXPECT_TRUE(plain(*document).starts_with("first\tlast\t"));
}

TEST(RichTextPage, ShowsAPictureInTheSizeThatItAsksFor) {
    const auto document = richText("{\\rtf1 " + pictureGroup("\\pngblip\\picwgoal1440\\pichgoal720") + "}");
    const QTextImageFormat image = document->begin().begin().fragment().charFormat().toImageFormat();
    ASSERT_TRUE(image.isValid());
    EXPECT_DOUBLE_EQ(image.width(), 2 * image.height());
    EXPECT_FALSE(document->resource(QTextDocument::ImageResource, QUrl(image.name())).isNull());
}

TEST(RichTextPage, ScalesAPictureThatIsWiderThanAPage) {
    const auto document = richText("{\\rtf1 " + pictureGroup("\\pngblip\\picwgoal30000\\pichgoal15000") + "}");
    EXPECT_LE(document->begin().begin().fragment().charFormat().toImageFormat().width(), 560);
}

TEST(RichTextPage, LeavesOutPicturesThatItCannotShow) {
    EXPECT_EQ(plain(*richText("{\\rtf1 a" + pictureGroup("\\wmetafile8") + pictureGroup("\\emfblip") +
                              "{\\pict\\pngblip 8950zz}{\\pict\\pngblip}b}")),
              "ab");
}

TEST(RichTextPage, ShowsAPictureOnceThatComesInTwoForms) {
    const auto document = richText("{\\rtf1{\\*\\shppict" + pictureGroup("\\pngblip") + "}{\\nonshppict" +
                                   pictureGroup("\\pngblip") + "}}");
    EXPECT_EQ(document->characterCount(), 2);  // the picture and the end of its paragraph
}

TEST(RichTextPage, OpensNoLinkThatIsNotAnAddress) {
    const auto document =
        richText("{\\rtf1{\\field{\\*\\fldinst{HYPERLINK \"https://example.org\"}}{\\fldrslt good}}}");
    EXPECT_TRUE(formatOf(*document, "good").isAnchor());
    EXPECT_TRUE(formatOf(*document, "good").fontUnderline());
}

}  // namespace
