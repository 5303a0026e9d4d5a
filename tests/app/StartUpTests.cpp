#include "app/MakerLinks.h"
#include "tests/app/AppFixture.h"

namespace {

class StartUp : public AppFixture {
protected:
    static std::string settings(const std::string& more = "") {
        return "{ KZPluginName = Larkspur; KZPluginVersion = \"2.4.1\"; KZPluginAuthor = \"Orrin Audio\"; " + more +
               " }";
    }
};

TEST_F(StartUp, FillsTheWindow) {
    writeSettings(settings());
    delegate.awakeFromNib();
    EXPECT_EQ(name.text, "Larkspur");
    EXPECT_EQ(version.text, "2.4.1");
    EXPECT_EQ(author.text, "by Orrin Audio");
    EXPECT_EQ(window.title, "Larkspur Installer");
}

TEST_F(StartUp, ShowsTheBrandingLineWithALink) {
    writeSettings(settings());
    delegate.awakeFromNib();
    const platform::AttributedString expected{{.text = "Installer created with "},
                                              {.text = "Tallowmere",
                                               .link = MakerLinks::productPage,
                                               .color = platform::TextColor::blue,
                                               .underline = platform::UnderlineStyle::single},
                                              {.text = " by Corvane."}};
    EXPECT_EQ(branding.attributed, expected);
    EXPECT_TRUE(branding.selectable);
    EXPECT_TRUE(branding.allowsEditingTextAttributes);
}

TEST_F(StartUp, KeepsBrandingAndHandOffUnlessToldOtherwise) {
    writeSettings(settings());
    delegate.awakeFromNib();
    EXPECT_FALSE(branding.hidden);
    EXPECT_FALSE(handOff.hidden);
}

TEST_F(StartUp, HidesBrandingAndHandOffAndNothingElse) {
    writeSettings(settings("removeBranding = 1;"));
    delegate.awakeFromNib();
    EXPECT_TRUE(branding.hidden);
    EXPECT_TRUE(handOff.hidden);
    EXPECT_FALSE(name.hidden || author.hidden || version.hidden || installButton.hidden || spinner.hidden ||
                 image.hidden);
}

TEST_F(StartUp, ShowsTheBackgroundImage) {
    addResource("back.png", "image");
    writeSettings(settings("KZBgImagePath = \"back.png\";"));
    delegate.awakeFromNib();
    ASSERT_NE(image.image, nullptr);
    EXPECT_EQ(dynamic_cast<fakes::FakeImage&>(*image.image).path, bundle.resourcesFolder + "/back.png");
}

TEST_F(StartUp, EmptiesTheImageViewForAFileThatIsNoImage) {
    addResource("back.png", "no image");
    application.unreadable.insert(bundle.resourcesFolder + "/back.png");
    writeSettings(settings("KZBgImagePath = \"back.png\";"));
    delegate.awakeFromNib();
    EXPECT_TRUE(image.touched);
    EXPECT_EQ(image.image, nullptr);
    EXPECT_TRUE(application.panels.empty());
}

TEST_F(StartUp, LeavesTheImageViewAsDesignedWithoutAnImage) {
    writeSettings(settings("KZBgImagePath = \"gone.png\";"));
    delegate.awakeFromNib();
    EXPECT_FALSE(image.touched);
}

TEST_F(StartUp, RefusesADamagedInstallerAndQuits) {
    delegate.awakeFromNib();
    ASSERT_EQ(application.panels.size(), 1U);
    EXPECT_EQ(application.panels[0],
              std::pair(std::string("Unable to install"), std::string("This installer has been damaged.")));
    EXPECT_EQ(application.terminations, 1);
    EXPECT_EQ(name.text, "design-time");
}

TEST_F(StartUp, RefusesADamagedInstallerAfterLaunchingToo) {
    delegate.applicationDidFinishLaunching();
    EXPECT_EQ(application.panels.size(), 1U);
    EXPECT_EQ(application.terminations, 1);
}

TEST_F(StartUp, LeavesTheWindowUnfilledInTestMode) {
    for (const auto* value : {"", "1"}) {
        system.environment["KZTESTMODE"] = value;
        delegate.awakeFromNib();
        EXPECT_EQ(name.text, "design-time");
        EXPECT_EQ(window.title, "design-time");
        EXPECT_TRUE(application.panels.empty());
    }
}

TEST_F(StartUp, StillShowsTheAgreementInTestMode) {
    system.environment["KZTESTMODE"] = "";
    addResource("License.rtf", "x");
    writeSettings(settings("KZEULAPath = \"License.rtf\";"));
    delegate.awakeFromNib();
    delegate.applicationDidFinishLaunching();
    EXPECT_EQ(application.sheet, &agreementSheet);
}

TEST_F(StartUp, StillRefusesADamagedInstallerInTestMode) {
    system.environment["KZTESTMODE"] = "";
    delegate.awakeFromNib();
    EXPECT_TRUE(application.panels.empty());
    delegate.applicationDidFinishLaunching();
    EXPECT_EQ(application.panels.size(), 1U);
}

TEST_F(StartUp, ReadsTheSettingsAfreshAtEachStep) {
    addResource("License.rtf", "x");
    writeSettings(settings());
    delegate.awakeFromNib();
    writeSettings(settings("KZEULAPath = \"License.rtf\";"));
    delegate.applicationDidFinishLaunching();
    EXPECT_EQ(application.sheet, &agreementSheet);
}

TEST_F(StartUp, IsReadyAtOnceWithoutAnAgreement) {
    writeSettings(settings("KZEULAPath = \"Gone.rtf\";"));
    delegate.awakeFromNib();
    delegate.applicationDidFinishLaunching();
    EXPECT_EQ(application.sheet, nullptr);
    EXPECT_TRUE(installButton.enabled);
    EXPECT_EQ(application.terminations, 0);
}

TEST_F(StartUp, QuitsWithItsLastWindow) { EXPECT_TRUE(delegate.applicationShouldTerminateAfterLastWindowClosed()); }

class Agreement : public StartUp {
protected:
    void SetUp() override {
        addResource("License.rtf", "{\\rtf1 agreed?}");
        writeSettings(settings("KZEULAPath = \"License.rtf\";"));
        delegate.awakeFromNib();
        delegate.applicationDidFinishLaunching();
    }
};

TEST_F(Agreement, IsShownAsASheetOfTheMainWindow) {
    EXPECT_EQ(application.sheet, &agreementSheet);
    EXPECT_EQ(application.sheetParent, &window);
}

TEST_F(Agreement, IsShownInTheStandardColourAndCannotBeEdited) {
    ASSERT_NE(agreementText.document, nullptr);
    EXPECT_EQ(dynamic_cast<fakes::FakeDocument&>(*agreementText.document).path,
              bundle.resourcesFolder + "/License.rtf");
    EXPECT_TRUE(agreementText.standardColor);
    EXPECT_FALSE(agreementText.editable);
}

TEST_F(Agreement, LeavesTheInstallerReadyWhenAgreedTo) {
    delegate.eulaAgree();
    EXPECT_EQ(application.sheet, nullptr);
    EXPECT_GE(agreementSheet.orderedOut, 1);
    EXPECT_EQ(application.terminations, 0);
    EXPECT_TRUE(installButton.enabled);
}

TEST_F(Agreement, EndsTheInstallerWhenDeclined) {
    delegate.eulaDisagree();
    EXPECT_EQ(application.sheet, nullptr);
    EXPECT_GE(agreementSheet.orderedOut, 1);
    EXPECT_EQ(application.terminations, 2);  // asked for by the button and by the sheet's end
}

TEST_F(Agreement, ThatCannotBeReadStillGates) {
    application.unreadable.insert(bundle.resourcesFolder + "/License.rtf");
    application.sheet = nullptr;
    delegate.applicationDidFinishLaunching();
    EXPECT_EQ(application.sheet, &agreementSheet);
    EXPECT_EQ(agreementText.document, nullptr);
}

TEST(DesignTime, OutletsGiveBackWhatTheyWereSetTo) {
    WickfieldAppDelegate delegate;
    fakes::FakeWindow window;
    fakes::FakeButton button;
    fakes::FakeTextField field;
    delegate.setWindow(&window);
    delegate.setBtnGantry(&button);
    delegate.setTextPluginVersion(&field);
    EXPECT_EQ(delegate.window(), &window);
    EXPECT_EQ(delegate.btnGantry(), &button);
    EXPECT_EQ(delegate.textPluginVersion(), &field);
    EXPECT_EQ(delegate.windowEULA(), nullptr);
}

}  // namespace
