#include "app/InstallerSettings.h"

#include "tests/app/AppFixture.h"

namespace {

std::string dictionary(const std::string& body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" + body + "</dict></plist>\n";
}

class Settings : public AppFixture {
protected:
    InstallerSettings load(const std::string& contents) {
        writeSettings(contents);
        return InstallerSettings::load(*InstallerSettings::locate());
    }
};

TEST_F(Settings, ShowNameVersionAndAuthor) {
    const auto settings = load(dictionary(
        "<key>KZPluginName</key><string>Larkspur Réverb</string><key>KZPluginVersion</key><string>2.4.1</string>"
        "<key>KZPluginAuthor</key><string>Orrin Audio</string>"));
    EXPECT_EQ(settings.pluginName(), "Larkspur Réverb");
    EXPECT_EQ(settings.pluginVersion(), "2.4.1");
    EXPECT_EQ(settings.author(), "by Orrin Audio");
    EXPECT_EQ(settings.windowTitle(), "Larkspur Réverb Installer");
}

TEST_F(Settings, ShowAbsentKeysAsNull) {
    const auto settings = load(dictionary(""));
    EXPECT_EQ(settings.pluginName(), "(null)");
    EXPECT_EQ(settings.pluginVersion(), "(null)");
    EXPECT_EQ(settings.author(), "by (null)");
    EXPECT_EQ(settings.windowTitle(), "(null) Installer");
}

TEST_F(Settings, ShowAVersionOfAnyKindByItsDescription) {
    EXPECT_EQ(load(dictionary("<key>KZPluginVersion</key><integer>3</integer>")).pluginVersion(), "3");
    EXPECT_EQ(load(dictionary("<key>KZPluginVersion</key><real>1.5</real>")).pluginVersion(), "1.5");
    EXPECT_EQ(load(dictionary("<key>KZPluginVersion</key><true/>")).pluginVersion(), "1");
    EXPECT_EQ(load(dictionary("<key>KZPluginVersion</key><array><string>a</string><string>b c</string></array>"))
                  .pluginVersion(),
              "(\n    a,\n    \"b c\"\n)");
}

TEST_F(Settings, KeepPercentSignsInValues) {
    EXPECT_EQ(load(dictionary("<key>KZPluginName</key><string>100%@ %n</string>")).windowTitle(), "100%@ %n Installer");
}

TEST_F(Settings, OfAMissingFileCannotBeLocated) { EXPECT_EQ(InstallerSettings::locate(), std::nullopt); }

TEST_F(Settings, OfAListedButRemovedFileCannotBeLocated) {
    bundle.resources["InstallerSettings.plist"] = disk / "gone.plist";
    EXPECT_EQ(InstallerSettings::locate(), std::nullopt);
}

class UnreadableSettings : public Settings, public ::testing::WithParamInterface<const char*> {};

TEST_P(UnreadableSettings, CountAsEmptyOnes) {
    const auto settings = load(GetParam());
    EXPECT_EQ(settings.windowTitle(), "(null) Installer");
    EXPECT_FALSE(settings.removesBranding());
    EXPECT_EQ(settings.agreement(), std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Contents, UnreadableSettings,
    ::testing::Values("", "   \n", "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>KZPlu",
                      "<plist version=\"1.0\"><array><string>KZPluginName</string></array></plist>", "bplist00\x01\x02",
                      "( a, list )", "{ unclosed = 1"));

class BrandingSwitch : public Settings, public ::testing::WithParamInterface<std::pair<const char*, bool>> {};

TEST_P(BrandingSwitch, IsReadByItsBooleanValue) {
    const auto& [value, removes] = GetParam();
    EXPECT_EQ(load(dictionary("<key>removeBranding</key>" + std::string(value))).removesBranding(), removes) << value;
}

INSTANTIATE_TEST_SUITE_P(
    Values, BrandingSwitch,
    ::testing::Values(std::pair{"<true/>", true}, std::pair{"<false/>", false}, std::pair{"<integer>1</integer>", true},
                      std::pair{"<integer>0</integer>", false}, std::pair{"<integer>-7</integer>", true},
                      std::pair{"<real>0.5</real>", true}, std::pair{"<string>YES</string>", true},
                      std::pair{"<string>true</string>", true}, std::pair{"<string> +007</string>", true},
                      std::pair{"<string>no</string>", false}, std::pair{"<string>0</string>", false},
                      std::pair{"<string></string>", false}, std::pair{"<array/>", false},
                      std::pair{"<dict/>", false}));

TEST_F(Settings, FindTheAgreementByNameAndExtension) {
    addResource("License.rtf", "{\\rtf1 x}");
    EXPECT_EQ(load(dictionary("<key>KZEULAPath</key><string>License.rtf</string>")).agreement(),
              bundle.resourcesFolder + "/License.rtf");
}

TEST_F(Settings, FindAnAgreementWithoutExtension) {
    addResource("License", "plain");
    EXPECT_EQ(load(dictionary("<key>KZEULAPath</key><string>License</string>")).agreement(),
              bundle.resourcesFolder + "/License");
}

TEST_F(Settings, FindAnImageInAFolderOfTheResources) {
    addResource("Art/back.png", "image");
    EXPECT_EQ(load(dictionary("<key>KZBgImagePath</key><string>Art/back.png</string>")).backgroundImage(),
              bundle.resourcesFolder + "/Art/back.png");
}

TEST_F(Settings, IgnoreReferencesThatNameNoFile) {
    const auto settings = load(
        dictionary("<key>KZEULAPath</key><string>Gone.rtf</string><key>KZBgImagePath</key><string>gone.png</string>"));
    EXPECT_EQ(settings.agreement(), std::nullopt);
    EXPECT_EQ(settings.backgroundImage(), std::nullopt);
}

TEST_F(Settings, IgnoreReferencesOfTheWrongKind) {
    const auto settings = load(dictionary("<key>KZEULAPath</key><integer>7</integer><key>KZBgImagePath</key><array/>"));
    EXPECT_EQ(settings.agreement(), std::nullopt);
    EXPECT_EQ(settings.backgroundImage(), std::nullopt);
}

TEST_F(Settings, AreReadFromOldStyleText) {
    EXPECT_EQ(load("{ KZPluginName = \"Old Plug\"; removeBranding = YES; }").pluginName(), "Old Plug");
}

TEST_F(Settings, OfAHundredMegabytesEndInAnAnswer) {
    writeSettings(dictionary("<key>KZPluginName</key><string>" + std::string(100U << 20U, 'x') + "</string>"));
    const auto shown = InstallerSettings::load(*InstallerSettings::locate()).pluginName();
    EXPECT_TRUE(shown == "(null)" || shown.size() == 100U << 20U) << shown.size();
}

}  // namespace
