#include "tools/wickfield-bundle/create/BundleNames.h"

#include <gtest/gtest.h>

#include "tools/wickfield-bundle/create/CreateFailure.h"

namespace {

using wickfield_bundle::bundleIdentifier;
using wickfield_bundle::installerName;
using wickfield_bundle::Project;
using wickfield_bundle::SenselessProject;

Project called(const std::string& name, const std::string& author = "", const std::string& identifier = "") {
    Project project;
    project.name = name;
    project.author = author;
    project.identifier = identifier;
    return project;
}

TEST(BundleName, IsThePluginsWithTheWordInstaller) {
    EXPECT_EQ(installerName(called("Böse Reverb")), "Böse Reverb Installer");
}

TEST(BundleName, IsRefusedWhereNoFolderCanHaveIt) {
    for (const std::string& name : {std::string(), std::string("a/b"), std::string("a\nb"), std::string("a\x7f"),
                                    std::string(".hidden"), std::string("\xff"), std::string("..")}) {
        EXPECT_THROW(installerName(called(name)), SenselessProject) << name;
    }
}

TEST(BundleName, MayBeAsLongAsAFileName) {
    EXPECT_EQ(installerName(called(std::string(241, 'n'))).size() + 4, 255U);
    EXPECT_THROW(installerName(called(std::string(242, 'n'))), SenselessProject);
}

TEST(BundleIdentifier, IsTheProjects) {
    EXPECT_EQ(bundleIdentifier(called("Brook", "Fenwick", "com.Example.brook-2")), "com.Example.brook-2");
}

TEST(BundleIdentifier, IsMadeOfAuthorAndName) {
    EXPECT_EQ(bundleIdentifier(called("Larkspur Reverb!", "Orrin & Audio")),
              "com.orrin-audio.larkspur-reverb.installer");
    EXPECT_EQ(bundleIdentifier(called("Brook")), "com.brook.installer");
}

TEST(BundleIdentifier, IsAskedForWhereNoneCanBeMade) {
    EXPECT_THROW(bundleIdentifier(called("残響", "Fenwick")), SenselessProject);
    EXPECT_THROW(bundleIdentifier(called("Brook", "残響")), SenselessProject);
}

TEST(BundleIdentifier, IsRefusedWhenItIsNone) {
    for (const char* const text :
         {"brook", "com..brook", ".com.brook", "com.brook.", "com.br ook", "com.br/ook", "com.ö"}) {
        EXPECT_THROW(bundleIdentifier(called("Brook", "F", text)), SenselessProject) << text;
    }
}

TEST(NumericVersion, IsWhatTheVersionBeginsWith) {
    EXPECT_EQ(wickfield_bundle::numericVersion("2.4.1"), "2.4.1");
    EXPECT_EQ(wickfield_bundle::numericVersion("2.4.1.9"), "2.4.1");
    EXPECT_EQ(wickfield_bundle::numericVersion("2.4b3"), "2.4");
    EXPECT_EQ(wickfield_bundle::numericVersion("2."), "2");
    EXPECT_EQ(wickfield_bundle::numericVersion("beta"), "1");
    EXPECT_EQ(wickfield_bundle::numericVersion(""), "1");
}

}  // namespace
