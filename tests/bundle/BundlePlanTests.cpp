#include "tools/wickfield-bundle/create/BundlePlan.h"

#include "tests/bundle/CreateFixture.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class BundlePlans : public CreateFixture {
protected:
    BundlePlans() {
        write("x");
        addItem("x", "/Library/x");
    }
    std::string textOf(const platform::PropertyDictionary& values, const std::string& key) {
        const auto found = values.find(key);
        const auto* const text = found == values.end() ? nullptr : found->second.as<std::string>();
        return text == nullptr ? "(none)" : *text;
    }
    std::vector<std::string> places() {
        std::vector<std::string> found;
        for (const auto& copy : plan().copies) {
            found.push_back(copy.place);
        }
        return found;
    }
    // Of a plan that fails for what lies on the disk.
    std::string failureOfPlan() {
        try {
            plan();
        } catch (const wickfield_bundle::CreateFailure& failure) {
            return failure.what();
        }
        return "";
    }
};

TEST_F(BundlePlans, GiveTheSettingsTheNamesThatTheInstallerReads) {
    project.agreement = write("docs/Agreement.rtf");
    project.background = write("art/Background.png");
    project.removesBranding = true;
    const auto settings = plan().settings;
    EXPECT_EQ(textOf(settings, "KZPluginName"), "Brook");
    EXPECT_EQ(textOf(settings, "KZPluginVersion"), "1.3");
    EXPECT_EQ(textOf(settings, "KZPluginAuthor"), "Fenwick Audio");
    EXPECT_EQ(textOf(settings, "KZEULAPath"), "Agreement.rtf");
    EXPECT_EQ(textOf(settings, "KZBgImagePath"), "Background.png");
    EXPECT_EQ(settings.at("removeBranding"), platform::PropertyValue{true});
}

TEST_F(BundlePlans, LeaveOutSettingsWithoutAValueAndSaySo) {
    project.version = "";
    project.author = "";
    const auto settings = plan().settings;
    EXPECT_FALSE(settings.contains("KZPluginVersion") || settings.contains("KZPluginAuthor") ||
                 settings.contains("KZEULAPath") || settings.contains("KZBgImagePath"));
    EXPECT_THAT(warnings, ElementsAre(HasSubstr("no version"), HasSubstr("no author")));
}

TEST_F(BundlePlans, DescribeTheBundleForEachHost) {
    write("Template.app/Contents/Info.plist",
          "{ CFBundleIdentifier = template; NSPrincipalClass = NSApplication; LSMinimumSystemVersion = \"11.0\"; }");
    const auto information = plan().information;
    EXPECT_EQ(textOf(information, "CFBundleIdentifier"), "com.fenwick-audio.brook.installer");
    EXPECT_EQ(textOf(information, "CFBundleName"), "Brook Installer");
    EXPECT_EQ(textOf(information, "CFBundleExecutable"), "Wickfield");
    EXPECT_EQ(textOf(information, "CFBundleShortVersionString"), "1.3");
    EXPECT_EQ(textOf(information, "NSPrincipalClass"), "NSApplication");
    EXPECT_EQ(textOf(information, "LSMinimumSystemVersion"), "11.0");
}

TEST_F(BundlePlans, PutScriptsUnderTheNamesThatAreRun) {
    project.preinstall = write("scripts/quit hosts.sh");
    project.postinstall = write("scripts/register.scpt");
    EXPECT_THAT(places(), Contains("Contents/Resources/preinstall.sh"));
    EXPECT_THAT(places(), Contains("Contents/Resources/postinstall.scpt"));
}

TEST_F(BundlePlans, RefuseAScriptThatNothingWouldRun) {
    for (const char* const name : {"script", "script.py", "script.SH", "script.sh.txt"}) {
        project.preinstall = write(name);
        EXPECT_THAT(complaint(), HasSubstr("has to end in .sh, .swift or .scpt")) << name;
    }
    project.preinstall = makeFolder("folder.sh");
    EXPECT_THAT(complaint(), HasSubstr("is a folder"));
}

TEST_F(BundlePlans, RefuseTwoResourcesOfOneName) {
    project.agreement = write("docs/About");
    project.background = write("art/About");
    EXPECT_THAT(complaint(), HasSubstr("something else there has it"));
    project.background = write("art/PluginStructure");
    EXPECT_THAT(complaint(), HasSubstr("something else there has it"));
    project.background = write("art/InstallerSettings.plist");
    EXPECT_THAT(complaint(), HasSubstr("something else there has it"));
    project.background = write("art/preinstall.sh");
    project.preinstall = write("quit.sh");
    EXPECT_THAT(complaint(), HasSubstr("something else there has it"));
    write("Template.app/Contents/Resources/icon.png");
    project.background = write("art/icon.png");
    EXPECT_THAT(complaint(), HasSubstr("something else there has it"));
}

TEST_F(BundlePlans, TakeAFolderForAnAgreementWithPictures) {
    write("Agreement.rtfd/TXT.rtf");
    project.agreement = place / "Agreement.rtfd";
    EXPECT_THAT(places(), Contains("Contents/Resources/Agreement.rtfd"));
}

TEST_F(BundlePlans, NameWhatIsNotThere) {
    project.agreement = place / "none.rtf";
    EXPECT_THAT(failureOfPlan(), HasSubstr("the agreement “" + *project.agreement + "” is not there"));
    project.agreement.reset();
    project.tree = place / "none";
    EXPECT_THAT(failureOfPlan(), HasSubstr("the tree “" + *project.tree + "” is not there"));
    project.tree = place / "x";
    EXPECT_THAT(complaint(), HasSubstr("is no folder"));
}

TEST_F(BundlePlans, WantSomethingToInstall) {
    project.items.clear();
    EXPECT_THAT(complaint(), HasSubstr("nothing to install"));
}

TEST_F(BundlePlans, WantTextsThatFitOnALine) {
    project.version = "1\n2";
    EXPECT_THAT(complaint(), HasSubstr("the version has a control character"));
    project.version = "1";
    project.author = "\xff";
    EXPECT_THAT(complaint(), HasSubstr("the author has"));
}

TEST_F(BundlePlans, FindPipesSocketsAndDevicesDeepInASource) {
    makeFolder("folder/a/b");
    ASSERT_EQ(::mkfifo((place / "folder/a/b/pipe").c_str(), 0600), 0);
    addItem("folder", "/Library/folder");
    EXPECT_THAT(failureOfPlan(), HasSubstr("“" + (place / "folder/a/b/pipe") + "” is a pipe, a socket or a device"));
    project.items = {{place / "folder/a/b/pipe", "/Library/pipe"}};
    EXPECT_THAT(failureOfPlan(), HasSubstr("is a pipe"));
    project.items = {{"/dev/zero", "/Library/zero"}};
    EXPECT_THAT(failureOfPlan(), HasSubstr("is a pipe"));
}

TEST_F(BundlePlans, AreQuietAboutAProjectInOrder) {
    plan();
    EXPECT_THAT(warnings, IsEmpty());
}

}  // namespace
