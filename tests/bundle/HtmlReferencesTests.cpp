#include "tools/wickfield-bundle/check/HtmlReferences.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using wickfield_bundle::namesCharset;
using wickfield_bundle::referencesOf;

TEST(PagesOfHtml, NameWhatAReaderWouldFetchFromTheNetwork) {
    EXPECT_THAT(referencesOf("<p><IMG alt=x SRC = 'HTTPS://example.com/a.png'>").remote,
                ElementsAre("HTTPS://example.com/a.png"));
    EXPECT_THAT(referencesOf("<img src=//example.com/a.png>").remote, ElementsAre("//example.com/a.png"));
    EXPECT_THAT(referencesOf("<link href=\"http://example.com/a.css\" rel=stylesheet>").remote,
                ElementsAre("http://example.com/a.css"));
    EXPECT_THAT(referencesOf("<style>p { background: url( 'http://example.com/b.png' ) }</style>").remote,
                ElementsAre("http://example.com/b.png"));
    EXPECT_THAT(referencesOf("<body background=\"http://example.com/c.png\">").remote,
                ElementsAre("http://example.com/c.png"));
}

TEST(PagesOfHtml, DoNotFetchWhereAPersonWouldHaveToClick) {
    EXPECT_THAT(referencesOf("<a href='http://example.com/'>there</a> src='http://example.com/'").remote, IsEmpty());
    EXPECT_THAT(referencesOf("<link rel=author href=http://example.com/>").remote, IsEmpty());
}

TEST(PagesOfHtml, DoNotFetchWhatStandsInComments) {
    EXPECT_THAT(referencesOf("<!-- <img src=http://example.com/a.png> --><p>").remote, IsEmpty());
    EXPECT_THAT(referencesOf("<!-- <img src=http://example.com/a.png>").remote, IsEmpty());
}

TEST(PagesOfHtml, NameThePicturesBesideThem) {
    EXPECT_THAT(referencesOf("<img src=a.png><img src=\"b c/d.png\"><img src=a.png>").pictures,
                ElementsAre("a.png", "b c/d.png"));
    EXPECT_THAT(referencesOf("<img src='data:image/png;base64,AA'><img src='a%20b.png'><img src=''>").pictures,
                IsEmpty());
}

TEST(PagesOfHtml, AreReadHoweverTheyAreBroken) {
    for (const char* page : {"<", "<img", "<img src", "<img src=", "<img src='", "<img src=\"x", "<img ====", "<!--",
                             "url(", "@import", "<img src='x", "<\xFF\xFE src=\xFF>"}) {
        EXPECT_THAT(referencesOf(page).remote, IsEmpty()) << page;
    }
}

TEST(PagesOfHtml, AreReadWithinMomentsHoweverLongTheyAre) {
    std::string page;
    for (int i = 0; i < 100000; ++i) {
        page += "<img src=http://example.com/" + std::to_string(i) + "><!--";
    }
    EXPECT_EQ(referencesOf(page).remote.size(), 1U);
    std::string many;
    for (int i = 0; i < 10000; ++i) {
        many += "<img src=" + std::to_string(i) + ".png>";
    }
    EXPECT_EQ(referencesOf(many).pictures.size(), 100U);
}

TEST(PagesOfHtml, SayHowTheirLettersAreEncoded) {
    EXPECT_TRUE(namesCharset("<html><head><META CHARSET=utf-8>"));
    EXPECT_TRUE(namesCharset("<?xml version='1.0' encoding='utf-8'?><html>"));
    EXPECT_FALSE(namesCharset("<html><p>encoding"));
    EXPECT_FALSE(namesCharset(""));
}

}  // namespace
