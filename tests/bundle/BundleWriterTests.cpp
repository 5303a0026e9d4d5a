#include "tools/wickfield-bundle/create/BundleWriter.h"

#include <sys/xattr.h>

#include "app/InstallerSettings.h"
#include "platform/linux/services/LinuxMainBundle.h"
#include "tests/bundle/CreateFixture.h"

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using wickfield_bundle::Replace;

class WritingABundle : public CreateFixture {
protected:
    WritingABundle() {
        write("Brook.vst3/Contents/Info.plist", "info");
        addItem("Brook.vst3", "/Library/Audio/Plug-Ins/VST3/Brook.vst3");
    }
    std::string installed(const std::string& name = "") const {
        return tree() + "/Library/Audio/Plug-Ins/VST3/Brook.vst3" + name;
    }
};

TEST_F(WritingABundle, PutsItemsWhereTheyAreInstalledFrom) {
    create();
    EXPECT_EQ(read(installed("/Contents/Info.plist")), "info");
    EXPECT_EQ(read(bundle() + "/Contents/Linux/Wickfield"), "#!/bin/sh\n");
    EXPECT_THAT(inOutput(), ElementsAre("Brook Installer.app"));
}

TEST_F(WritingABundle, GivesTheInstallerSettingsThatItReads) {
    project.name = "A & B <C>";
    project.agreement = write("Agreement.rtf", "{\\rtf1}");
    create();
    auto services = platform::linux_host::services();
    platform::linux_host::LinuxMainBundle made(*services.propertyLists,
                                               out + "/A & B <C> Installer.app/Contents/Linux/Wickfield");
    services.bundle = &made;
    const platform::ScopedHost installer(services);
    const auto settings = InstallerSettings::load(InstallerSettings::locate().value_or(""));
    EXPECT_EQ(settings.windowTitle(), "A & B <C> Installer");
    EXPECT_EQ(settings.author(), "by Fenwick Audio");
    EXPECT_EQ(settings.agreement(), made.resourcePath() + "/Agreement.rtf");
    EXPECT_EQ(made.infoValue("CFBundleIdentifier"),
              platform::PropertyValue{std::string("com.fenwick-audio.a-b-c.installer")});
}

TEST_F(WritingABundle, KeepsModesTimesLinksAndAttributes) {
    const std::string file = write("Brook.vst3/Contents/run", "x", 0750);
    std::filesystem::create_symlink("../elsewhere", place / "Brook.vst3/link");
    const bool hasAttributes = ::setxattr(file.c_str(), "user.colour", "blue", 4, 0) == 0;
    setTime(file, 1'600'000'000, 123'456'789);
    setTime(place / "Brook.vst3/link", 1'500'000'000);
    ::chmod((place / "Brook.vst3/Contents").c_str(), 0711);
    setTime(place / "Brook.vst3/Contents", 1'400'000'000);
    create();
    EXPECT_EQ(modeOf(installed("/Contents/run")), 0750U);
    EXPECT_EQ(look(installed("/Contents/run")).st_mtim.tv_sec, 1'600'000'000);
    EXPECT_EQ(look(installed("/Contents/run")).st_mtim.tv_nsec, 123'456'789);
    EXPECT_EQ(std::filesystem::read_symlink(installed("/link")), "../elsewhere");
    EXPECT_EQ(look(installed("/link")).st_mtim.tv_sec, 1'500'000'000);
    EXPECT_EQ(modeOf(installed("/Contents")), 0711U);
    EXPECT_EQ(look(installed("/Contents")).st_mtim.tv_sec, 1'400'000'000);
    if (hasAttributes) {
        char value[8] = {};
        EXPECT_EQ(::getxattr(installed("/Contents/run").c_str(), "user.colour", value, sizeof value), 4);
    }
}

TEST_F(WritingABundle, DropsTheMarkOfAQuarantine) {
    const std::string file = write("Brook.vst3/Contents/run");
    if (::setxattr(file.c_str(), "user.com.apple.quarantine", "0081", 4, 0) != 0) {
        GTEST_SKIP() << "the file system has no extended attributes";
    }
    ASSERT_EQ(::setxattr((place / "Brook.vst3").c_str(), "user.com.apple.quarantine", "0081", 4, 0), 0);
    create();
    EXPECT_LT(::getxattr(installed("/Contents/run").c_str(), "user.com.apple.quarantine", nullptr, 0), 0);
    EXPECT_LT(::getxattr(installed().c_str(), "user.com.apple.quarantine", nullptr, 0), 0);
}

TEST_F(WritingABundle, PutsItemsBesideWhatTheTreeHas) {
    write("tree/Library/Audio/Plug-Ins/CLAP/Brook.clap", "clap");
    ::chmod((place / "tree/Library/Audio/Plug-Ins").c_str(), 0555);
    setTime(place / "tree/Library/Audio/Plug-Ins", 1'300'000'000);
    project.tree = place / "tree";
    create();
    ::chmod((place / "tree/Library/Audio/Plug-Ins").c_str(), 0755);
    EXPECT_EQ(read(tree() + "/Library/Audio/Plug-Ins/CLAP/Brook.clap"), "clap");
    EXPECT_EQ(read(installed("/Contents/Info.plist")), "info");
    // As the tree had it, though something was put into it.
    EXPECT_EQ(modeOf(tree() + "/Library/Audio/Plug-Ins"), 0555U);
    EXPECT_EQ(look(tree() + "/Library/Audio/Plug-Ins").st_mtim.tv_sec, 1'300'000'000);
}

TEST_F(WritingABundle, CanBeLookedIntoByAnybodyWhateverTheTreesFolderAllowed) {
    write("tree/Library/x");
    project.tree = place / "tree";
    ::chmod(project.tree->c_str(), 0700);
    const mode_t before = ::umask(0077);
    create();
    ::umask(before);
    for (const char* const name : {"", "/Contents", "/Contents/Resources", "/Contents/Resources/PluginStructure"}) {
        EXPECT_EQ(modeOf(bundle() + name), 0755U) << name;
    }
    EXPECT_EQ(modeOf(bundle() + "/Contents/Info.plist"), 0644U);
    EXPECT_EQ(modeOf(bundle() + "/Contents/Resources/InstallerSettings.plist"), 0644U);
}

TEST_F(WritingABundle, GivesWhatItMakesTheNewestTimeOfTheSources) {
    setAllTimes(1'200'000'000);
    setTime(place / "Brook.vst3/Contents/Info.plist", 1'250'000'000, 5);
    create();
    for (const char* const name :
         {"", "/Contents", "/Contents/Info.plist", "/Contents/Resources", "/Contents/Resources/InstallerSettings.plist",
          "/Contents/Resources/PluginStructure/Library/Audio"}) {
        EXPECT_EQ(look(bundle() + name).st_mtim.tv_sec, 1'250'000'000) << name;
        EXPECT_EQ(look(bundle() + name).st_mtim.tv_nsec, 5) << name;
    }
}

TEST_F(WritingABundle, MakesNothingNewerThanTheLatestTime) {
    std::filesystem::create_symlink("x", place / "Brook.vst3/link");
    setTime(place / "Brook.vst3/Contents/Info.plist", 900'000'000);
    wishes.latestTime = 1'000'000'000;
    create();
    for (const auto& entry : std::filesystem::recursive_directory_iterator(bundle())) {
        const bool isOlder =
            entry.path().filename() == "Info.plist" && entry.path().string().find("vst3") != std::string::npos;
        EXPECT_EQ(look(entry.path()).st_mtim.tv_sec, isOlder ? 900'000'000 : 1'000'000'000) << entry.path();
    }
    EXPECT_EQ(look(bundle()).st_mtim.tv_sec, 1'000'000'000);
}

TEST_F(WritingABundle, LeavesABundleThatIsThereAloneUnlessToldOtherwise) {
    create();
    write("out/Brook Installer.app/mark");
    EXPECT_THAT(failure(), HasSubstr("is there already; --force replaces it"));
    EXPECT_TRUE(stands(bundle() + "/mark"));
    wishes.replace = Replace::yes;
    create();
    EXPECT_FALSE(stands(bundle() + "/mark"));
    EXPECT_THAT(inOutput(), ElementsAre("Brook Installer.app"));
}

TEST_F(WritingABundle, ReplacesNothingThatIsNoBundle) {
    wishes.replace = Replace::yes;
    write("out/Brook Installer.app", "a file");
    EXPECT_THAT(failure(), HasSubstr("is no bundle that could be replaced"));
    std::filesystem::remove(bundle());
    write("out/Brook Installer.app/precious");
    EXPECT_THAT(failure(), HasSubstr("is no bundle that could be replaced"));
    EXPECT_TRUE(stands(bundle() + "/precious"));
    std::filesystem::remove_all(bundle());
    write("elsewhere/Contents/Info.plist");
    std::filesystem::create_symlink(place / "elsewhere", bundle());
    EXPECT_THAT(failure(), HasSubstr("is no bundle that could be replaced"));
}

TEST_F(WritingABundle, RefusesToWriteIntoItsOwnSources) {
    wishes.outputFolder = makeFolder("Brook.vst3/Contents/out");
    EXPECT_THAT(failure(), HasSubstr("choose another folder by --output"));
    std::filesystem::create_directory_symlink(wishes.outputFolder, place / "shortcut");
    wishes.outputFolder = place / "shortcut";
    EXPECT_THAT(failure(), HasSubstr("choose another folder by --output"));
    EXPECT_TRUE(std::filesystem::is_empty(place / "Brook.vst3/Contents/out"));
    wishes.outputFolder = place / "Brook.vst3/Contents/new/folder";
    EXPECT_THAT(failure(), HasSubstr("choose another folder by --output"));
    EXPECT_FALSE(stands(place / "Brook.vst3/Contents/new"));
}

TEST_F(WritingABundle, RefusesToReplaceTheBundleThatASourceLiesIn) {
    create();
    project.items = {{installed(), "/Library/Brook.vst3"}};
    wishes.replace = Replace::yes;
    EXPECT_THAT(failure(), HasSubstr("lies in the bundle that is to be replaced"));
    EXPECT_TRUE(stands(installed()));
}

TEST_F(WritingABundle, LeavesNothingBehindWhenItFails) {
    const auto planned = plan();
    std::filesystem::remove_all(place / "Brook.vst3");
    EXPECT_THROW(wickfield_bundle::writeBundle(planned, wishes), wickfield_bundle::CreateFailure);
    EXPECT_THAT(inOutput(), IsEmpty());
}

TEST_F(WritingABundle, WritesAnItemIntoAnother) {
    write("Manual.pdf", "manual");
    addItem("Manual.pdf", "/Library/Audio/Plug-Ins/VST3/Brook.vst3/Contents/Resources/Manual.pdf");
    create();
    EXPECT_EQ(read(installed("/Contents/Resources/Manual.pdf")), "manual");
}

TEST_F(WritingABundle, WritesThroughNoLinkOfAnItem) {
    makeFolder("outside");
    write("Manual.pdf", "manual");
    addItem("Manual.pdf", "/Library/Audio/Plug-Ins/VST3/Brook.vst3/Resources/Manual.pdf");
    const auto planned = plan();
    std::filesystem::create_directory_symlink(place / "outside", place / "Brook.vst3/Resources");
    EXPECT_THAT(complaint(), HasSubstr("Brook.vst3/Resources” is no folder"));
    EXPECT_THROW(wickfield_bundle::writeBundle(planned, wishes), wickfield_bundle::CreateFailure);
    EXPECT_TRUE(std::filesystem::is_empty(place / "outside"));
}

TEST_F(WritingABundle, WarnsOfSetIdBits) {
    write("Brook.vst3/Contents/helper", "x", 04755);
    create();
    EXPECT_THAT(warnings, ElementsAre(HasSubstr("helper” has a set-id bit")));
    EXPECT_EQ(modeOf(installed("/Contents/helper")), 04755U);
}

TEST_F(WritingABundle, TakesALinkForWhatItLeadsTo) {
    std::filesystem::create_directory_symlink("Brook.vst3", place / "latest");
    project.items = {{place / "latest", "/Library/Audio/Plug-Ins/VST3/Brook.vst3"}};
    create();
    EXPECT_EQ(read(installed("/Contents/Info.plist")), "info");
    EXPECT_FALSE(std::filesystem::is_symlink(installed()));
}

// A folder within a folder, so many levels down that no path leads there; gives the innermost.
int descend(const std::string& top, bool makes) {
    int folder = ::open(top.c_str(), O_RDONLY | O_DIRECTORY);
    for (int level = 0; level < 3'000 && folder >= 0; ++level) {
        if (makes) {
            ::mkdirat(folder, "d", 0755);
        }
        const int below = ::openat(folder, "d", O_RDONLY | O_DIRECTORY);
        ::close(folder);
        folder = below;
    }
    return folder;
}

TEST_F(WritingABundle, GoesAsDeepAsItsSources) {
    int bottom = descend(makeFolder("deep"), true);
    ::close(::openat(bottom, "file", O_CREAT | O_WRONLY, 0644));
    ::close(bottom);
    project.items = {{place / "deep", "/Library/deep"}};
    create();
    bottom = descend(tree() + "/Library/deep", false);
    EXPECT_EQ(::faccessat(bottom, "file", R_OK, 0), 0);
    ::close(bottom);
    // The fixture's own way of removing a folder is a recursive one.
    EXPECT_FALSE(platform::host().files->removeItem(out));
    EXPECT_FALSE(platform::host().files->removeItem(place / "deep"));
}

TEST_F(WritingABundle, PacksAnArchiveBesideTheBundle) {
    wishes.archives = true;
    const auto written = create();
    EXPECT_EQ(written.archive, out + "/Brook Installer.zip");
    EXPECT_THAT(inOutput(), UnorderedElementsAre("Brook Installer.app", "Brook Installer.zip"));
    EXPECT_THAT(read(*written.archive), HasSubstr("Brook Installer.app/Contents/Info.plist"));
}

TEST_F(WritingABundle, LeavesAnArchiveThatIsThereAloneUnlessToldOtherwise) {
    wishes.archives = true;
    write("out/Brook Installer.zip", "older");
    EXPECT_THAT(failure(), HasSubstr("is there already; --force replaces it"));
    EXPECT_THAT(inOutput(), ElementsAre("Brook Installer.zip"));
    wishes.replace = Replace::yes;
    create();
    EXPECT_NE(read(out + "/Brook Installer.zip"), "older");
}

TEST_F(WritingABundle, MergesTemplatesForSeveralHosts) {
    write("Mac.app/Contents/MacOS/Wickfield", "mach", 0755);
    write("Mac.app/Contents/Resources/icon.icns", "icon");
    write("Mac.app/Contents/Info.plist", "{ NSPrincipalClass = NSApplication; }");
    const auto both =
        wickfield_bundle::chooseTemplates({.paths = {place / "Template.app", place / "Mac.app"}, .hosts = {}});
    wickfield_bundle::writeBundle(wickfield_bundle::planBundle(project, both, warn), wishes);
    EXPECT_EQ(read(bundle() + "/Contents/MacOS/Wickfield"), "mach");
    EXPECT_EQ(read(bundle() + "/Contents/Linux/Wickfield"), "#!/bin/sh\n");
    EXPECT_EQ(read(bundle() + "/Contents/Resources/icon.icns"), "icon");
    EXPECT_THAT(read(bundle() + "/Contents/Info.plist"), HasSubstr("NSApplication"));
}

}  // namespace
