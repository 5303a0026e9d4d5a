#include <algorithm>
#include <string>
#include <vector>

#include "app/MakerLinks.h"
#include "tests/app/AppFixture.h"
#include "tests/fakes/FakeWorkspace.h"

namespace {

using Strings = std::vector<std::string>;

class Links : public AppFixture {
protected:
    Links() {
        auto desktop = platform::host();
        desktop.workspace = &workspace;
        platform::setHost(desktop);
    }

    fakes::FakeWorkspace workspace;
};

TEST_F(Links, GettingTheSuiteOpensItsProductPage) {
    delegate.getTallowmere();
    EXPECT_EQ(workspace.openedURLs, Strings{MakerLinks::productPage});
}

TEST_F(Links, TheSuitesSiteIsItsProductPage) {
    delegate.tallowmereSite();
    EXPECT_EQ(workspace.openedURLs, Strings{MakerLinks::productPage});
}

TEST_F(Links, TheUserManualIsADocumentToRead) {
    delegate.tallowmereUserManual();
    ASSERT_EQ(workspace.openedURLs, Strings{MakerLinks::userManual});
    EXPECT_TRUE(workspace.openedURLs[0].ends_with(".pdf"));
}

TEST_F(Links, SupportOpensTheSupportPage) {
    delegate.tallowmereSupport();
    EXPECT_EQ(workspace.openedURLs, Strings{MakerLinks::supportPage});
}

TEST_F(Links, TheMakersSiteIsHisHomePage) {
    delegate.corvaneSite();
    EXPECT_EQ(workspace.openedURLs, Strings{MakerLinks::homePage});
}

TEST_F(Links, NoBrowserIsNoReasonToBotherTheUser) {
    workspace.opens = false;
    delegate.corvaneSite();
    EXPECT_EQ(workspace.openedURLs.size(), 1U);
    EXPECT_TRUE(alerts.shown.empty());
    EXPECT_TRUE(application.panels.empty());
}

TEST_F(Links, EveryPageIsTheMakersOwnAndFetchedSecurely) {
    const std::string maker = MakerLinks::homePage;
    EXPECT_TRUE(maker.starts_with("https://"));
    for (const std::string page : {MakerLinks::productPage, MakerLinks::supportPage, MakerLinks::userManual}) {
        EXPECT_TRUE(page.starts_with(maker)) << page;
    }
}

TEST_F(Links, TheBrandingLineLeadsToTheProductPage) {
    writeSettings("{ \"pluginName\" = \"Plug\"; }");
    delegate.awakeFromNib();
    const auto link = std::find_if(branding.attributed.begin(), branding.attributed.end(),
                                   [](const auto& run) { return run.link.has_value(); });
    ASSERT_NE(link, branding.attributed.end());
    EXPECT_EQ(link->link, MakerLinks::productPage);
}

}  // namespace
