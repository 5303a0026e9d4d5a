#include "platform/linux/services/LinuxMainBundle.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "platform/linux/services/propertylists/LinuxPropertyLists.h"
#include "tests/fakes/ScopedEnvironment.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

using platform::PropertyValue;
using platform::linux_host::LinuxMainBundle;

class Bundle : public testing::Test {
protected:
    void write(const std::string& relative, const std::string& text = "x") const {
        const std::filesystem::path path = m_folder / relative;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path) << text;
    }
    void resource(const std::string& relative) const { write("Tiny.app/Contents/Resources/" + relative); }
    std::string resourcePath(const std::string& relative) const {
        return m_folder / ("Tiny.app/Contents/Resources/" + relative);
    }
    LinuxMainBundle bundle(const std::string& executable = "Tiny.app/Contents/Linux/Tiny") {
        return {m_propertyLists, m_folder / executable};
    }

    fakes::TemporaryFolder m_folder;
    platform::linux_host::LinuxPropertyLists m_propertyLists;
    fakes::ScopedEnvironment m_language{"LANGUAGE", std::nullopt};
    fakes::ScopedEnvironment m_all{"LC_ALL", "de_DE.UTF-8"};
};

TEST_F(Bundle, IsTheApplicationAroundTheExecutable) {
    for (const char* executable : {"Tiny.app/Contents/Linux/Tiny", "Tiny.app/Contents/MacOS/Tiny"}) {
        EXPECT_EQ(bundle(executable).bundlePath(), m_folder / "Tiny.app");
        EXPECT_EQ(bundle(executable).resourcePath(), m_folder / "Tiny.app/Contents/Resources");
        EXPECT_EQ(bundle(executable).executablePath(), m_folder / executable);
    }
}

TEST_F(Bundle, IsTheFolderOfAnExecutableThatLiesInNone) {
    for (const char* folder : {"bin", "Tiny/Contents/Linux", "Tiny.app/Linux", "Tiny.app/Contents/Other"}) {
        auto bare = bundle(std::string(folder) + "/tool");
        EXPECT_EQ(bare.bundlePath(), m_folder / folder);
        EXPECT_EQ(bare.resourcePath(), m_folder / folder);
    }
}

TEST_F(Bundle, OfTheRunningProcessHoldsItsExecutable) {
    LinuxMainBundle own(m_propertyLists);

    EXPECT_EQ(own.executablePath(), std::filesystem::read_symlink("/proc/self/exe").string());
    EXPECT_TRUE(std::filesystem::exists(own.bundlePath()));
}

TEST_F(Bundle, FindsAResourceByNameAndType) {
    resource("InstallerSettings.plist");
    resource("License");

    EXPECT_EQ(bundle().pathForResource("InstallerSettings", "plist"), resourcePath("InstallerSettings.plist"));
    EXPECT_EQ(bundle().pathForResource("License", ""), resourcePath("License"));
}

TEST_F(Bundle, FindsFoldersAndNamesWithDotsOrAFolderPart) {
    resource("PluginStructure/Library/x");
    resource("v1.2.notes.rtf");
    resource("images/dark/background.png");

    EXPECT_EQ(bundle().pathForResource("PluginStructure", ""), resourcePath("PluginStructure"));
    EXPECT_EQ(bundle().pathForResource("v1.2.notes", "rtf"), resourcePath("v1.2.notes.rtf"));
    EXPECT_EQ(bundle().pathForResource("images/dark/background", "png"), resourcePath("images/dark/background.png"));
}

TEST_F(Bundle, HasNoResourceThatIsNotThere) {
    resource("License.rtf");

    EXPECT_EQ(bundle().pathForResource("License", "html"), std::nullopt);
    EXPECT_EQ(bundle().pathForResource("License", ""), std::nullopt);
    EXPECT_EQ(bundle().pathForResource("", "rtf"), std::nullopt);
    EXPECT_EQ(bundle().pathForResource("", ""), std::nullopt);
    EXPECT_EQ(bundle().pathForResource(std::string(100000, 'x'), "rtf"), std::nullopt);
    EXPECT_EQ(bundle().pathForResource(std::string("License.rtf\0", 12), ""), std::nullopt);
}

TEST_F(Bundle, DoesNotCountADanglingLinkAsAResource) {
    resource("x");
    std::filesystem::create_symlink("nowhere", resourcePath("License.rtf"));

    EXPECT_EQ(bundle().pathForResource("License", "rtf"), std::nullopt);
}

TEST_F(Bundle, PrefersTheUsersLanguage) {
    resource("de.lproj/License.rtf");
    resource("en.lproj/License.rtf");
    resource("fr.lproj/License.rtf");

    EXPECT_EQ(bundle().pathForResource("License", "rtf"), resourcePath("de.lproj/License.rtf"));
}

TEST_F(Bundle, PrefersTheRegionToTheLanguage) {
    resource("de.lproj/License.rtf");
    resource("de_DE.lproj/License.rtf");

    EXPECT_EQ(bundle().pathForResource("License", "rtf"), resourcePath("de_DE.lproj/License.rtf"));
}

TEST_F(Bundle, FallsBackToEnglishAndTheBase) {
    resource("Base.lproj/License.rtf");
    EXPECT_EQ(bundle().pathForResource("License", "rtf"), resourcePath("Base.lproj/License.rtf"));

    resource("en.lproj/License.rtf");
    EXPECT_EQ(bundle().pathForResource("License", "rtf"), resourcePath("en.lproj/License.rtf"));
}

TEST_F(Bundle, PrefersAResourceThatIsNotLocalised) {
    resource("de.lproj/License.rtf");
    resource("License.rtf");

    EXPECT_EQ(bundle().pathForResource("License", "rtf"), resourcePath("License.rtf"));
}

TEST_F(Bundle, KnowsTheValuesOfItsInformation) {
    write("Tiny.app/Contents/Info.plist",
          "<plist><dict><key>CFBundleIdentifier</key><string>com.example.tiny</string></dict></plist>");

    EXPECT_EQ(bundle().infoValue("CFBundleIdentifier"), PropertyValue{std::string("com.example.tiny")});
    EXPECT_EQ(bundle().infoValue("CFBundleName"), std::nullopt);
}

TEST_F(Bundle, HasNoInformationWhenItsFileIsMissingDamagedOrAList) {
    EXPECT_EQ(bundle().infoValue("a"), std::nullopt);
    for (const char* text : {"", "<plist><dict><key>a</key>", "<plist><array><string>a</string></array></plist>"}) {
        write("Tiny.app/Contents/Info.plist", text);
        EXPECT_EQ(bundle().infoValue("a"), std::nullopt) << text;
    }
    std::filesystem::remove(m_folder / "Tiny.app/Contents/Info.plist");
    std::filesystem::create_directory(m_folder / "Tiny.app/Contents/Info.plist");
    EXPECT_EQ(bundle().infoValue("a"), std::nullopt);
}

}  // namespace
