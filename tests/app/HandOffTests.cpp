#include "app/MakerLinks.h"
#include "tests/app/AppFixture.h"
#include "tests/fakes/FakeWorkspace.h"

namespace {

class HandOff : public AppFixture {
protected:
    HandOff() {
        auto desktop = platform::host();
        desktop.workspace = &workspace;
        platform::setHost(desktop);
    }

    void answer(long code) {
        alerts.answer = [code](const fakes::FakeAlerts::Shown&) { return code; };
    }

    fakes::FakeWorkspace workspace;
};

TEST_F(HandOff, AsksWhereTheManagerMayBeHadWhenItIsAbsent) {
    answer(0);
    delegate.sendToGantry();
    ASSERT_EQ(alerts.shown.size(), 1U);
    const auto& contents = alerts.shown[0]->contents;
    EXPECT_EQ(contents.messageText, "This feature requires Tallowmere");
    EXPECT_EQ(contents.informativeText, "Gantry gives you more options for installing and managing your plugins.");
    EXPECT_EQ(contents.defaultButton, "Download");
    EXPECT_EQ(contents.alternateButton, "Cancel");
    EXPECT_EQ(contents.otherButton, std::nullopt);
    EXPECT_EQ(alerts.shown[0]->parent, &window);
}

TEST_F(HandOff, OpensNothingWhenCancelled) {
    answer(0);
    delegate.sendToGantry();
    EXPECT_TRUE(workspace.openedURLs.empty());
}

TEST_F(HandOff, OpensTheProductPageForADownload) {
    answer(1);
    delegate.sendToGantry();
    EXPECT_EQ(workspace.openedURLs, std::vector<std::string>{MakerLinks::productPage});
}

TEST_F(HandOff, OpensTheTreeWithAnInstalledManager) {
    workspace.applications["com.corvane.Gantry"] = "/usr/bin/gantry";
    bundle.bundle = "/tmp/Plug Installer.app";
    delegate.sendToGantry();
    EXPECT_TRUE(alerts.shown.empty());
    EXPECT_EQ(workspace.openedURLs,
              std::vector<std::string>{"file:///tmp/Plug%20Installer.app/Contents/Resources/PluginStructure"});
}

}  // namespace
