#include "platform/linux/services/workspace/LinuxWorkspace.h"

#include <sys/time.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>

#include "platform/linux/services/workspace/DesktopEntries.h"
#include "platform/linux/services/workspace/Mounts.h"
#include "tests/fakes/FakeIdentity.h"
#include "tests/linux/FilesFixture.h"

namespace {

using platform::linux_host::commandLine;
using platform::linux_host::DesktopEntry;
using platform::linux_host::localMountPoints;
using platform::linux_host::parseDesktopEntry;

// Sets a variable of the environment for one test.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const std::string& value) : m_name(name) {
        if (const char* old = std::getenv(name)) {
            m_old = old;
        }
        ::setenv(name, value.c_str(), 1);
    }
    ~ScopedVariable() { m_old ? ::setenv(m_name, m_old->c_str(), 1) : ::unsetenv(m_name); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

private:
    const char* m_name;
    std::optional<std::string> m_old;
};

class Workspace : public FilesFixture {
protected:
    void SetUp() override {
        makeFolder("home/.local/share/applications");
        m_identity.home = at("home");
        m_dataHome.emplace("XDG_DATA_HOME", "");
        m_dataFolders.emplace("XDG_DATA_DIRS", at("system"));
    }
    void writeTool(const std::string& name, const std::string& script) const {
        write(name, "#!/bin/sh\n" + script + "\n");
        setMode(name, 0755);
    }
    bool appears(const std::string& name) const {
        for (int i = 0; i < 500 && !isThere(name); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return isThere(name);
    }

    fakes::FakeIdentity m_identity;
    platform::linux_host::LinuxWorkspace m_workspace{m_identity};
    std::optional<ScopedVariable> m_dataHome;
    std::optional<ScopedVariable> m_dataFolders;
};

TEST_F(Workspace, FolderWithABundlesExtensionIsAPackageInWhateverCase) {
    for (const char* name : {"a.vst3", "a.VST3", "a.Component", "a.clap", "a.app", "a.b.bundle", "a.aaxplugin"}) {
        makeFolder(name);
        EXPECT_TRUE(m_workspace.isFilePackage(at(name))) << name;
        EXPECT_TRUE(m_workspace.isFilePackage(at(name) + "/")) << name;
    }
    for (const char* name : {"plain", ".app", "a.txt", "app", "a.app.old", "a."}) {
        makeFolder(name);
        EXPECT_FALSE(m_workspace.isFilePackage(at(name))) << name;
    }
}

TEST_F(Workspace, OnlyFoldersAndLinksToThemArePackages) {
    write("file.app", "x");
    makeFolder("folder.app");
    link("link.app", "folder.app");
    link("dangling.app", "nowhere");
    EXPECT_FALSE(m_workspace.isFilePackage(at("file.app")));
    EXPECT_TRUE(m_workspace.isFilePackage(at("link.app")));
    EXPECT_FALSE(m_workspace.isFilePackage(at("dangling.app")));
    EXPECT_FALSE(m_workspace.isFilePackage(at("missing.app")));
}

TEST_F(Workspace, BundleBitMakesAFolderAPackage) {
    makeFolder("folder");
    std::string finderInfo(32, '\0');
    finderInfo[8] = 0x20;
    if (!setAttribute("folder", "user.com.apple.FinderInfo", finderInfo)) {
        GTEST_SKIP() << "no extended attributes here";
    }
    EXPECT_TRUE(m_workspace.isFilePackage(at("folder")));
    ASSERT_TRUE(setAttribute("folder", "user.com.apple.FinderInfo", finderInfo.substr(0, 10)));
    EXPECT_FALSE(m_workspace.isFilePackage(at("folder")));
}

TEST_F(Workspace, TrashFollowsTheDataFolderOfTheOwnHomeOnly) {
    const ScopedVariable dataHome("XDG_DATA_HOME", at("home/data"));
    makeFolder("other");
    write("one", "1");
    write("two", "2");
    EXPECT_FALSE(m_workspace.recycle(at("."), "one", at("home/.Trash")));
    EXPECT_FALSE(m_workspace.recycle(at("."), "two", at("other/.Trash")));
    EXPECT_EQ(read("home/data/Trash/files/one"), "1");
    EXPECT_EQ(read("other/.local/share/Trash/files/two"), "2");
}

TEST_F(Workspace, HintsAboutChangesAreCountedAndDropped) {
    m_workspace.noteFileSystemChanged(at("file"));
    EXPECT_EQ(m_workspace.sendFinderUpdate(std::nullopt), 0);
    EXPECT_EQ(m_workspace.droppedHints(), 2U);
}

TEST_F(Workspace, ApplicationIsFoundByItsDesktopEntry) {
    makeFolder("Gantry.app/Contents/Linux");
    writeTool("Gantry.app/Contents/Linux/Gantry", "");
    write(
        "home/.local/share/applications/com.example.Gantry.desktop",
        "[Desktop Entry]\nType=Application\nName=Gantry\nExec=\"" + at("Gantry.app/Contents/Linux/Gantry") + "\" %u\n");
    EXPECT_EQ(m_workspace.applicationWithIdentifier("com.example.Gantry"), at("Gantry.app"));
    EXPECT_EQ(m_workspace.applicationWithIdentifier("com.example.Other"), std::nullopt);
    EXPECT_EQ(m_workspace.applicationWithIdentifier("../applications/com.example.Gantry"), std::nullopt);
    std::filesystem::remove_all(at("Gantry.app"));
    EXPECT_EQ(m_workspace.applicationWithIdentifier("com.example.Gantry"), std::nullopt);
}

TEST_F(Workspace, ApplicationIsStartedWithTheAddressAndNotWaitedFor) {
    writeTool("tool",
              "printf '%s' \"$1\" > " + at("seen.part") + "; mv " + at("seen.part") + " " + at("seen") + "; sleep 5");
    write("home/.local/share/applications/com.example.Gantry.desktop",
          "[Desktop Entry]\nType=Application\nName=Gantry\nExec=" + at("tool") + " %u\n");
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(m_workspace.openURLs({"gantry:a b;$(touch /x)"}, "com.example.Gantry"));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(4));
    ASSERT_TRUE(appears("seen"));
    EXPECT_EQ(read("seen"), "gantry:a b;$(touch /x)");
    EXPECT_FALSE(m_workspace.openURLs({"gantry:"}, "com.example.Other"));
}

TEST_F(Workspace, FolderIsNoProgramOfAnApplication) {
    makeFolder("Gantry.app");
    write("home/.local/share/applications/com.example.Gantry.desktop",
          "[Desktop Entry]\nType=Application\nName=Gantry\nExec=\"" + at("Gantry.app") + "\" %u\n");
    EXPECT_EQ(m_workspace.applicationWithIdentifier("com.example.Gantry"), std::nullopt);
    makeFolder("bin/xdg-open");
    makeFolder("later");
    writeTool("later/xdg-open", "touch " + at("seen"));
    const ScopedVariable path("PATH", at("bin") + ":" + at("later") + ":/usr/bin:/bin");
    EXPECT_TRUE(m_workspace.openURL("https://example.com/"));
    EXPECT_TRUE(appears("seen"));
}

TEST_F(Workspace, ApplicationIsStartedAlsoWhileSignalsCome) {
    writeTool("tool", "exit 0");
    write("home/.local/share/applications/com.example.Gantry.desktop",
          "[Desktop Entry]\nType=Application\nName=Gantry\nExec=" + at("tool") + "\n");
    struct sigaction noticed {};
    struct sigaction before {};
    noticed.sa_handler = [](int) {};  // without SA_RESTART: calls that wait are interrupted
    ASSERT_EQ(::sigaction(SIGALRM, &noticed, &before), 0);
    const itimerval often{.it_interval = {.tv_sec = 0, .tv_usec = 500}, .it_value = {.tv_sec = 0, .tv_usec = 500}};
    const itimerval never{};
    ::setitimer(ITIMER_REAL, &often, nullptr);
    bool started = true;
    for (int time = 0; time < 50; ++time) {
        started = started && m_workspace.openURLs({}, "com.example.Gantry");
    }
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &before, nullptr);
    EXPECT_TRUE(started);
}

TEST_F(Workspace, AddressGoesToTheDesktopsOwnTool) {
    makeFolder("bin");
    writeTool("bin/xdg-open", "printf '%s' \"$1\" > " + at("seen.part") + "; mv " + at("seen.part") + " " + at("seen"));
    const ScopedVariable path("PATH", at("bin") + ":/usr/bin:/bin");
    EXPECT_TRUE(m_workspace.openURL("https://example.com/?a=b&c"));
    ASSERT_TRUE(appears("seen"));
    EXPECT_EQ(read("seen"), "https://example.com/?a=b&c");
    EXPECT_FALSE(m_workspace.openURL("--version"));
    EXPECT_FALSE(m_workspace.openURL(""));
    EXPECT_FALSE(m_workspace.openURL(std::string("https://example.com/\0x", 22)));
}

TEST_F(Workspace, AddressIsNotOpenedWithoutADesktop) {
    const ScopedVariable path("PATH", at("empty"));
    EXPECT_FALSE(m_workspace.openURL("https://example.com/"));
}

TEST_F(Workspace, RootIsAmongTheMountedVolumes) { EXPECT_EQ(m_workspace.mountedLocalVolumePaths().back(), "/"); }

TEST(MountPoints, AreLocalOnesWithInnerOnesFirst) {
    EXPECT_EQ(localMountPoints("22 1 8:1 / / rw shared:1 - ext4 /dev/sda1 rw\n"
                               "23 22 0:5 / /proc rw - proc proc rw\n"
                               "24 22 8:2 / /media/My\\040Disk\\134x rw,noatime - vfat /dev/sdb1 rw\n"
                               "25 24 8:3 / /media/My\\040Disk\\134x/inner rw - xfs /dev/sdc1 rw\n"
                               "26 22 0:9 / /net rw shared:2 master:3 - nfs4 server:/ rw\n"
                               "27 22 0:10 / /dev/shm rw - tmpfs tmpfs rw\n"),
              (std::vector<std::string>{"/media/My Disk\\x/inner", "/media/My Disk\\x", "/dev/shm", "/"}));
}

TEST(MountPoints, MutilatedLinesGiveTheRootAlone) {
    for (const char* text : {"", "\n\n", "garbage", "1 2 3 4", "1 2 3 4 /a rw", "1 2 3 4 /a rw -", "1 2 3 4 /a\\04"}) {
        EXPECT_EQ(localMountPoints(std::string_view(text)), std::vector<std::string>{"/"}) << text;
    }
}

TEST(DesktopEntries, OnlyTheirMainGroupCounts) {
    const auto entry = parseDesktopEntry(
        "# comment\n[Desktop Entry]\nType = Application\nName=A\\sB\nExec=run\n[Desktop Action x]\nExec=other\n");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->name, "A B");
    EXPECT_EQ(entry->exec, "run");
    EXPECT_FALSE(parseDesktopEntry("[Desktop Entry]\nType=Link\nExec=run\n"));
    EXPECT_FALSE(parseDesktopEntry("[Desktop Entry]\nType=Application\nExec=run\nHidden=true\n"));
    EXPECT_FALSE(parseDesktopEntry("Type=Application\nExec=run\n"));
    EXPECT_FALSE(parseDesktopEntry(""));
}

TEST(DesktopEntries, CommandLineFillsInItsFieldCodes) {
    const DesktopEntry entry{"/e.desktop", "Name", "icon", R"("/a b/run" --x=%% %U %c %k %i %m "q \"r\"")"};
    EXPECT_EQ(commandLine(entry, {"u1", "u2"}), (std::vector<std::string>{"/a b/run", "--x=%", "u1", "u2", "Name",
                                                                          "/e.desktop", "--icon", "icon", "q \"r\""}));
    EXPECT_EQ(commandLine({"", "", "", "run %u"}, {"u1", "u2"}), (std::vector<std::string>{"run", "u1"}));
    EXPECT_EQ(commandLine({"", "", "", "run %f"}, {}), std::vector<std::string>{"run"});
    EXPECT_TRUE(commandLine({"", "", "", "run \"open"}, {}).empty());
}

TEST(DesktopEntries, GivePathsToAnApplicationThatWantsFiles) {
    const std::vector<std::string> urls{"file:///a%20b/%C3%bc", "file://localhost/c", "https://example.com/d%20e"};
    EXPECT_EQ(commandLine({"", "", "", "run %F"}, urls),
              (std::vector<std::string>{"run", "/a b/\xc3\xbc", "/c", "https://example.com/d%20e"}));
    EXPECT_EQ(commandLine({"", "", "", "run --tree=%f"}, urls),
              (std::vector<std::string>{"run", "--tree=/a b/\xc3\xbc"}));
    EXPECT_EQ(commandLine({"", "", "", "run %U"}, urls).at(1), "file:///a%20b/%C3%bc");
}

TEST(DesktopEntries, LeaveAnAddressAloneThatStandsForNoPathHere) {
    for (const std::string url :
         {"file://elsewhere/a", "file:///a%0", "file:///a%zz", "file:///a%00b", "file:", "/a%20"}) {
        EXPECT_EQ(commandLine({"", "", "", "run %f"}, {url}).back(), url);
    }
}

}  // namespace
