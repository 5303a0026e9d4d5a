#include "app/InstallationScripts.h"

#include "tests/app/AppFixture.h"

namespace {

class Scripts : public AppFixture {
protected:
    std::string found(const std::string& script) {
        const auto result = InstallationScripts::find(bundle.resourcesFolder, script);
        return result ? result->path.substr(bundle.resourcesFolder.size() + 1) + " by " + result->interpreter : "none";
    }
};

TEST_F(Scripts, AreFoundWithTheirInterpreters) {
    addResource("preinstall.sh", "");
    addResource("postinstall.swift", "");
    EXPECT_EQ(found(InstallationScripts::before), "preinstall.sh by /bin/bash");
    EXPECT_EQ(found(InstallationScripts::after), "postinstall.swift by /usr/bin/swift");
}

TEST_F(Scripts, AreNotNeeded) { EXPECT_EQ(found(InstallationScripts::before), "none"); }

TEST_F(Scripts, OfAnEarlierExtensionHideThoseOfLaterOnes) {
    addResource("preinstall.sh", "");
    addResource("preinstall.swift", "");
    EXPECT_EQ(found(InstallationScripts::before), "preinstall.swift by /usr/bin/swift");
    addResource("preinstall.scpt", "");
    EXPECT_EQ(found(InstallationScripts::before), "preinstall.scpt by /usr/bin/osascript");
}

TEST_F(Scripts, OfOtherExtensionsAreNone) {
    for (const auto* each : {"preinstall", "preinstall.py", "preinstall.SH", "Preinstall.sh"}) {
        addResource(each, "");
    }
    EXPECT_EQ(found(InstallationScripts::before), "none");
}

TEST_F(Scripts, CountAsMissingWhenTheyAreLinksThatLeadNowhere) {
    fs::create_symlink("nowhere", bundle.resourcesFolder + "/preinstall.scpt");
    addResource("preinstall.sh", "");
    EXPECT_EQ(found(InstallationScripts::before), "preinstall.sh by /bin/bash");
}

}  // namespace
