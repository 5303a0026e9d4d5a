#include "platform/macos/appkit/SafeHtml.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace {

constexpr const char* begin = "<!DOCTYPE html><html><head><meta charset=\"utf-8\"></head><body>";
constexpr const char* end = "</body></html>";

// What is made of it, without the frame that is always the same.
std::string made(const std::string& html) {
    const std::string page = platform::macos::safeHtml(html, [](const std::string&) { return std::string(); });
    EXPECT_TRUE(page.starts_with(begin) && page.ends_with(end)) << page;
    return page.substr(std::string(begin).size(), page.size() - std::string(begin).size() - std::string(end).size());
}

TEST(AWebPage, KeepsItsTextAndItsForm) {
    EXPECT_EQ(made("<h1 align=center>Terms</h1><p>One <b>bold</b> word.<br/>\n<ol start='3'><li>first</ol>"),
              "<h1 align=\"center\">Terms</h1><p>One <b>bold</b> word.<br>\n<ol start=\"3\"><li>first</ol>");
}

TEST(AWebPage, IsAsciiSoThatNoGuessAtItsEncodingMakesElementsOfIt) {
    EXPECT_EQ(made("\u00DCber \u2014 \U0001F600"), "&#220;ber &#8212; &#128512;");
}

TEST(AWebPage, KeepsWhatLooksLikeATagAndIsNone) {
    EXPECT_EQ(made("a < b > c &lt;img src=x&gt; <"), "a &lt; b &gt; c &lt;img src=x&gt; &lt;");
}

TEST(AWebPage, NamesNothingElsewhere) {
    const std::vector<std::string> pages{"<img src=http://x/y.png>",
                                         "<img src='//x/y.png'>",
                                         "<img src=file:///etc/passwd>",
                                         "<img src='../y.png'>",
                                         "<IMG SRC=\"y.png\">",
                                         "<img src=data:image/svg+xml;base64,AAAA>",
                                         "<img srcset='http://x/y.png 2x'>",
                                         "<link rel=stylesheet href=http://x/s.css>",
                                         "<base href=http://x/>",
                                         "<meta http-equiv=refresh content='0;url=http://x/'>",
                                         "<iframe src=http://x/></iframe>",
                                         "<object data=http://x/y></object>",
                                         "<embed src=http://x/y>",
                                         "<video src=http://x/y poster=http://x/z></video>",
                                         "<input type=image src=http://x/y>",
                                         "<body background=http://x/y>",
                                         "<svg><image href=http://x/y /></svg>",
                                         "<script src=http://x/y></script>",
                                         "<script>load('http://x/')</script>",
                                         "<SCRIPT>x</SCRIPT >",
                                         "<style>@import 'http://x/s.css';</style>",
                                         "<style>p{background:url(http://x/y)}</style>",
                                         "<style>p{background:u\\72l(http://x/y)}</style>",
                                         "<style></style",
                                         "<!-- <img src=http://x/y> -->",
                                         "<frameset><frame src=http://x/></frameset>",
                                         "<?php http://x ?>",
                                         "<![CDATA[http://x]]>",
                                         "<img src=http://x"};
    for (const std::string& page : pages) {
        const std::string shown = made(page);
        EXPECT_TRUE(shown.empty() || shown == "<style></style>") << page << " gives " << shown;
    }
}

TEST(AWebPage, LeavesOutWhatAnElementWouldRunOrLoad) {
    EXPECT_EQ(made("<p onclick='x()' style='color:red;background:url(http://x/y);margin-left: 2em' background=x>t</p>"),
              "<p style=\"color:red;margin-left: 2em;\">t</p>");
    EXPECT_EQ(made("<td background=\"http://x/y\" colspan=9999999 rowspan=2>t</td>"), "<td rowspan=\"2\">t</td>");
}

TEST(AWebPage, KeepsTheRulesOfItsStyleSheetThatLoadNothing) {
    EXPECT_EQ(
        made("<style>/* url( */ .fine{display:none} @media print{p{color:red}} #a{color:blue}</style><p class=fine>"),
        "<style> .fine{display:none} #a{color:blue}</style><p class=\"fine\">");
}

TEST(AWebPage, CannotBreakOutOfAnAttribute) {
    EXPECT_EQ(made("<p class='\"><img src=http://x/y>' lang=\"de'\">t</p>"), "<p>t</p>");
    EXPECT_EQ(made("<p style='a\"><img src=http://x>'>t</p>"), "<p style=\"\">t</p>");
}

TEST(AWebPage, LeadsToTheWebAndToMailOnly) {
    EXPECT_EQ(made("<a href='https://a.example/?b=c&amp;d'>e</a>"), "<a href=\"https://a.example/?b=c&amp;d\">e</a>");
    EXPECT_EQ(made("<a href=MAILTO:a@b.example>e</a>"), "<a href=\"MAILTO:a@b.example\">e</a>");
    for (const std::string address : {"javascript:x()", "file:///etc/passwd", "java&#115;cript:x", "data:text/html,x",
                                      "x.html", "#there", "https:\\\\x"}) {
        EXPECT_EQ(made("<a href=\"" + address + "\">e</a>"), "<a>e</a>") << address;
    }
}

TEST(AWebPage, ShowsThePicturesThatItCarriesOrHasBesideIt) {
    EXPECT_EQ(made("<img src='data:image/png;base64,iVBORw0KGgo=' width=40 onload=x()>"),
              "<img src=\"data:image/png;base64,iVBORw0KGgo=\" width=\"40\">");
    std::string asked;
    const auto beside = [&asked](const std::string& name) {
        asked += name + ";";
        return std::string("QUJD");
    };
    const std::string page = platform::macos::safeHtml(
        "<img src=Logo.PNG><img src=../a.png><img src=/a.png><img src=.a.png>"
        "<img src=a.pdf><img src=http://x/a.png><img src=a%2Fb.png>",
        beside);
    EXPECT_EQ(asked, "Logo.PNG;");
    EXPECT_NE(page.find("<body><img src=\"data:image/png;base64,QUJD\"></body>"), std::string::npos) << page;
}

TEST(AWebPage, DescribesAPictureThatItDoesNotShow) {
    EXPECT_EQ(made("<img src=http://x/y.png alt='Our <seal>'>"), "Our &lt;seal&gt;");
}

TEST(AWebPage, KeepsTheTextOfAField) {
    EXPECT_EQ(made("<textarea>You <b>agree</textarea>."), "<pre>You &lt;b&gt;agree</pre>.");
}

TEST(AWebPage, MayEndAnywhere) {
    const std::string page =
        "<!-- c --><p class=\"a\" style='b:c'>t\u00E4<img src=x.png alt=y><style>p{}</style><a href=";
    for (std::size_t length = 0; length <= page.size(); ++length) {
        EXPECT_EQ(made(page.substr(0, length)).find("src="), std::string::npos);
    }
}

TEST(AWebPage, OfMegabytesTakesMoments) {
    const auto start = std::chrono::steady_clock::now();
    std::string page;
    for (const char* part : {"<", "<!--", "<p ", "<a href=\"", "<style>", "&", "<script"}) {
        for (int i = 0; i < 100'000; ++i) {
            page += part;
        }
        made(page);
        page.clear();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

}  // namespace
