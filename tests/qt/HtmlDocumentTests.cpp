#include "platform/linux/qt/agreement/HtmlDocument.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QTextBlock>
#include <QTextTable>

#include "tests/qt/AgreementText.h"

namespace {

using agreement_tests::formatOf;
using agreement_tests::plain;
using agreement_tests::smallPng;

std::unique_ptr<QTextDocument> page(const std::string& html, const std::string& folder = "/nonexistent") {
    auto document = std::make_unique<platform::qt::AgreementTextDocument>();
    platform::qt::fillFromHtml(*document, QString::fromStdString(html), folder);
    return document;
}

int pictures(const QTextDocument& document) {
    int count = 0;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            count += it.fragment().charFormat().isImageFormat() ? it.fragment().length() : 0;
        }
    }
    return count;
}

TEST(HtmlPage, ShowsTextAndStyle) {
    const auto document = page("<h1>Licence</h1><p>Read <b>this</b>.</p>");
    EXPECT_EQ(plain(*document), "Licence\nRead this.");
    EXPECT_GE(formatOf(*document, "this").fontWeight(), QFont::Bold);
}

TEST(HtmlPage, IsReadInTheEncodingThatItNames) {
    EXPECT_EQ(platform::qt::decodeHtml("<meta charset=\"windows-1251\">\xCB").back(), u'Л');
    EXPECT_EQ(platform::qt::decodeHtml("<meta content='text/html; charset=ISO-8859-1'>\x80").back(), u'€');
    EXPECT_EQ(platform::qt::decodeHtml("<meta charset=utf-8>\xC3\xA9").back(), u'é');
    EXPECT_EQ(platform::qt::decodeHtml("<meta charset=no-such-thing>\xC3\xA9").back(), u'é');
}

TEST(HtmlPage, ShowsAPictureOfItsOwnFolder) {
    const fakes::TemporaryFolder folder;
    agreement_tests::writeFile(folder / "p.png", smallPng().toStdString());
    EXPECT_EQ(pictures(*page("<img src='p.png'>", folder.path())), 1);
}

TEST(HtmlPage, ShowsAPictureThatItCarriesItself) {
    EXPECT_EQ(pictures(*page("<img src='data:image/png;base64," + smallPng().toBase64().toStdString() + "'>")), 1);
}

TEST(HtmlPage, TakesNoPictureFromElsewhere) {
    const fakes::TemporaryFolder folder;
    const fakes::TemporaryFolder elsewhere;
    agreement_tests::writeFile(elsewhere / "p.png", smallPng().toStdString());
    ASSERT_EQ(::symlink((elsewhere / "p.png").c_str(), (folder / "link.png").c_str()), 0);
    for (const std::string& name :
         {elsewhere / "p.png", "file://" + (elsewhere / "p.png"), "../" + elsewhere.path() + "/p.png",
          std::string("link.png"), std::string("http://localhost/p.png"), std::string("qrc:/p.png")}) {
        EXPECT_EQ(pictures(*page("<img src='" + name + "'>", folder.path())), 0) << name;
    }
}

TEST(HtmlPage, DoesNotWaitForAPictureThatIsAPipe) {
    const fakes::TemporaryFolder folder;
    ASSERT_EQ(::mkfifo((folder / "p.png").c_str(), 0600), 0);
    EXPECT_EQ(pictures(*page("<img src='p.png'>x", folder.path())), 0);
}

TEST(HtmlPage, KeepsNoLinkOfADangerousKind) {
    const auto document =
        page("<a href='https://example.org'>good</a> <a href='javascript:x'>bad</a> <a href='file:///x'>worse</a>");
    EXPECT_FALSE(formatOf(*document, "good").anchorHref().isEmpty());
    EXPECT_TRUE(formatOf(*document, "bad").anchorHref().isEmpty());
    EXPECT_TRUE(formatOf(*document, "worse").anchorHref().isEmpty());
}

TEST(HtmlPage, BringsAbsurdSizesIntoBounds) {
    const auto document = page(
        "<p style='font-size:1pt;margin-left:9000px'>tiny</p><p style='font-size:999pt'>huge</p>"
        "<table width=9000><tr><td>cell</td></tr></table>");
    EXPECT_EQ(formatOf(*document, "tiny").fontPointSize(), 7);
    EXPECT_EQ(formatOf(*document, "huge").fontPointSize(), 48);
    EXPECT_LE(document->firstBlock().blockFormat().leftMargin(), 160);
    document->setTextWidth(500);
    EXPECT_LE(document->idealWidth(), 500);
}

TEST(HtmlPage, BreaksLinesThatWouldNotBreak) {
    std::string words;
    for (int i = 0; i < 200; ++i) {
        words += "word ";
    }
    const auto document = page("<p style='white-space:nowrap'>" + words + "</p><pre>" + words + "</pre>");
    document->setTextWidth(400);
    EXPECT_LE(document->idealWidth(), 400);
}

}  // namespace
