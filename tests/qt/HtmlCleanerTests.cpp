#include "platform/linux/qt/agreement/HtmlCleaner.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <string>

namespace {

std::string visible(const std::string& html) {
    return platform::qt::visibleHtml(QString::fromStdString(html)).html.toStdString();
}

TEST(VisibleHtml, KeepsWhatIsShown) {
    EXPECT_EQ(visible("<p class=\"a\">One &amp; <b>two</b></p>"), "<p class=\"a\">One &amp; <b>two</b></p>");
}

TEST(VisibleHtml, LeavesOutCommentsScriptsAndForms) {
    EXPECT_EQ(visible("a<!-- <p>x</p> -->b<script>if (a < b) "
                      "'</p>'</script>c<select><option>x</select>d<svg><text>x</text></svg>e"),
              "abcde");
}

TEST(VisibleHtml, LeavesOutWhatItsOwnStyleHides) {
    EXPECT_EQ(visible("a<p style=\"display: none\">x</p>b<span style='VISIBILITY:hidden'>x</span>c<i hidden>x</i>d"),
              "abcd");
}

TEST(VisibleHtml, LeavesOutWhatASimpleRuleHides) {
    EXPECT_EQ(visible("<style>.x, #y { display:none }</style><p class='a x'>1</p><p id=y>2</p><p>3</p>"),
              "<style>.x, #y { display:none }</style><p>3</p>");
}

TEST(VisibleHtml, ShowsWhatAnotherMediumHides) {
    EXPECT_EQ(visible("<style>@media print{.x{display:none}}</style><p class=x>1</p>"),
              "<style>@media print{.x{display:none}}</style><p class=x>1</p>");
}

TEST(VisibleHtml, ShowsWhatARuleForAnotherPlaceHides) {
    EXPECT_EQ(visible("<style>.old .x{display:none}</style><p class=x>1</p>"),
              "<style>.old .x{display:none}</style><p class=x>1</p>");
}

TEST(VisibleHtml, HidesAnElementWithAllThatLiesInIt) {
    EXPECT_EQ(visible("<div hidden><div>x</div><br><p>x</div>after"), "after");
}

TEST(VisibleHtml, AHiddenItemWithoutAnEndTagEndsWithTheNext) {
    EXPECT_EQ(visible("<ul><li hidden>x<li>two</ul>"), "<ul><li>two</ul>");
    EXPECT_EQ(visible("<div><p hidden>x</div>after"), "<div></div>after");
    EXPECT_EQ(visible("<p hidden>x<h1>Title</h1>"), "<h1>Title</h1>");
}

TEST(VisibleHtml, ATagThatIsCutOffIsNotShown) { EXPECT_EQ(visible("a<p class=\"x"), "a"); }

TEST(VisibleHtml, AnAngleThatBeginsNoTagIsText) { EXPECT_EQ(visible("1 < 2 and <3"), "1 < 2 and <3"); }

TEST(VisibleHtml, AQuotedAngleDoesNotEndATag) { EXPECT_EQ(visible("<p title = \"a>b\" hidden>x</p>y"), "y"); }

TEST(VisibleHtml, KeepsTheTextOfWhatLiesTooDeep) {
    std::string html;
    for (int i = 0; i < 50'000; ++i) {
        html += "<div>";
    }
    const std::string result = visible(html + "deep");
    EXPECT_LT(result.size(), 1000U);
    EXPECT_TRUE(result.ends_with("deep"));
}

TEST(VisibleHtml, BoundsWhatACellSpans) {
    EXPECT_EQ(visible("<table><tr><td colspan=70000 class=\"a\">x</td></tr></table>"),
              "<table><tr><td class=\"a\">x</td></tr></table>");
}

TEST(VisibleHtml, SaysThatAPageOfTooManyTagsWasCut) {
    QString html;
    for (int i = 0; i < 100'000; ++i) {
        html += u"<br>";
    }
    EXPECT_FALSE(platform::qt::visibleHtml(html).complete);
}

TEST(VisibleHtml, ReadsHostileTextInTimeThatGrowsWithIt) {
    QElapsedTimer clock;
    clock.start();
    std::string html = "<div hidden>";
    for (int i = 0; i < 200'000; ++i) {
        html += "<a></b>";
    }
    visible(html);
    visible(std::string(1'000'000, '<'));
    EXPECT_LT(clock.elapsed(), 10'000);
}

}  // namespace
