#include <sys/stat.h>
#include <unistd.h>

#include "tests/app/AppFixture.h"

namespace {

constexpr auto complete = "Installation complete: The plugin was successfully installed.";
constexpr auto refused = "Installation failed: Please check your permissions.";
constexpr auto scriptFailed = "Installation failed: A script terminated the installation.";

class Installation : public AppFixture {
protected:
    // A place on the disk, and the file of the tree that is installed there.
    std::string target(const std::string& file) const { return disk / "target/" + file; }
    std::string inTree(const std::string& file) const { return tree() + target(file); }

    std::vector<std::string> trashed() const {
        std::vector<std::string> names;
        if (fs::exists(home + "/.Trash")) {
            for (const auto& entry : fs::directory_iterator(home + "/.Trash/")) {
                names.push_back(entry.path().filename().string());
            }
        }
        return names;
    }

    static bool exists(const std::string& path) { return fs::exists(fs::symlink_status(path)); }
};

TEST_F(Installation, PutsEveryFileWhereTheTreeHasIt) {
    write(inTree("a/one.txt"), "1");
    write(inTree("a/b/c/two.txt"), "2");
    runInstallation();
    EXPECT_EQ(outcome(), complete);
    EXPECT_EQ(read(target("a/one.txt")), "1");
    EXPECT_EQ(read(target("a/b/c/two.txt")), "2");
}

TEST_F(Installation, OfAnEmptyTreeIsComplete) {
    runInstallation();
    EXPECT_EQ(outcome(), complete);
}

TEST_F(Installation, MovesAReplacedFileToTheTrash) {
    write(inTree("one.txt"), "new");
    write(target("one.txt"), "old");
    runInstallation();
    EXPECT_EQ(read(target("one.txt")), "new");
    ASSERT_EQ(trashed().size(), 1U);
    EXPECT_EQ(read(home + "/.Trash/" + trashed()[0]), "old");
}

TEST_F(Installation, KeepsBothWhenFilesOfOneNameAreReplaced) {
    for (const auto* folder : {"a", "b"}) {
        write(inTree(std::string(folder) + "/same.txt"), "new");
        write(target(std::string(folder) + "/same.txt"), std::string("old ") + folder);
    }
    runInstallation();
    EXPECT_EQ(outcome(), complete);
    ASSERT_EQ(trashed().size(), 2U);
    EXPECT_NE(read(home + "/.Trash/" + trashed()[0]), read(home + "/.Trash/" + trashed()[1]));
}

TEST_F(Installation, GivesAFreshModificationDate) {
    write(inTree("one.txt"), "1");
    fs::last_write_time(inTree("one.txt"), fs::file_time_type::clock::now() - std::chrono::hours(1000));
    runInstallation();
    EXPECT_GT(fs::last_write_time(target("one.txt")), fs::file_time_type::clock::now() - std::chrono::hours(1));
}

TEST_F(Installation, SkipsHiddenFilesButNotHiddenFolders) {
    write(inTree(".DS_Store"), "clutter");
    write(inTree(".hidden/.clutter"), "clutter");
    write(inTree(".hidden/seen.txt"), "seen");
    runInstallation();
    EXPECT_FALSE(exists(target(".DS_Store")));
    EXPECT_FALSE(exists(target(".hidden/.clutter")));
    EXPECT_EQ(read(target(".hidden/seen.txt")), "seen");
}

TEST_F(Installation, CopiesAPackageAsOneItem) {
    write(inTree("Plug.vst3/Contents/.kept"), "inside");
    write(target("Plug.vst3/Contents/stale"), "stale");
    runInstallation();
    EXPECT_EQ(read(target("Plug.vst3/Contents/.kept")), "inside");
    EXPECT_FALSE(exists(target("Plug.vst3/Contents/stale")));
    ASSERT_EQ(trashed().size(), 1U);
    EXPECT_EQ(read(home + "/.Trash/" + trashed()[0] + "/Contents/stale"), "stale");
}

TEST_F(Installation, SkipsAHiddenPackage) {
    write(inTree(".Plug.vst3/Contents/x"), "x");
    runInstallation();
    EXPECT_FALSE(exists(target(".Plug.vst3")));
}

TEST_F(Installation, ReplacesAFolderThatStandsInTheWayOfAFile) {
    write(inTree("thing"), "file");
    write(target("thing/inside"), "old");
    runInstallation();
    EXPECT_EQ(read(target("thing")), "file");
    EXPECT_EQ(trashed(), std::vector<std::string>{"thing"});
}

TEST_F(Installation, ReplacesALinkAndLeavesWhatItLedTo) {
    write(inTree("one.txt"), "new");
    write(target("elsewhere.txt"), "elsewhere");
    fs::create_symlink(target("elsewhere.txt"), target("one.txt"));
    runInstallation();
    EXPECT_EQ(read(target("one.txt")), "new");
    EXPECT_FALSE(fs::is_symlink(target("one.txt")));
    EXPECT_EQ(read(target("elsewhere.txt")), "elsewhere");
}

TEST_F(Installation, RefusesADestinationThatIsADanglingLink) {
    write(inTree("one.txt"), "new");
    fs::create_directories(target(""));
    fs::create_symlink("nowhere", target("one.txt"));
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser's own tool replaces the link";
    }
    runInstallation();
    EXPECT_EQ(outcome(), refused);
    EXPECT_EQ(fs::read_symlink(target("one.txt")), "nowhere");
}

TEST_F(Installation, CopiesLinksAsLinks) {
    write(target("there.txt"), "there");
    fs::create_directories(inTree(""));
    fs::create_symlink("there.txt", inTree("link.txt"));
    write(inTree("there.txt"), "there");  // so that the link of the tree leads somewhere too
    runInstallation();
    EXPECT_TRUE(fs::is_symlink(target("link.txt")));
    EXPECT_EQ(fs::read_symlink(target("link.txt")), "there.txt");
}

TEST_F(Installation, TakesALinkToAFolderForTheFolder) {
    write(disk / "shared/one.txt", "1");
    fs::create_directories(inTree(""));
    fs::create_directory_symlink(disk / "shared", inTree("linked"));
    runInstallation();
    EXPECT_FALSE(fs::is_symlink(target("linked")));
    EXPECT_EQ(read(target("linked/one.txt")), "1");
}

TEST_F(Installation, EndsForALinkThatLeadsBackToItsOwnFolder) {
    write(inTree("a/one.txt"), "1");
    fs::create_directory_symlink("..", inTree("a/loop"));
    runInstallation();
    EXPECT_EQ(outcome(), complete);
    EXPECT_TRUE(fs::is_symlink(target("a/loop")));
    EXPECT_EQ(read(target("a/one.txt")), "1");
}

TEST_F(Installation, ReportsADanglingLinkOfTheTreeAfterTheTimeOut) {
    fs::create_directories(inTree(""));
    fs::create_symlink("nowhere", inTree("dangling"));
    runInstallation();
    EXPECT_EQ(outcome(), refused);
    EXPECT_EQ(fs::read_symlink(target("dangling")), "nowhere");
}

TEST_F(Installation, PutsTheUsersFilesIntoTheUsersFolders) {
    write(tree() + "/Users/user/Library/Preferences/x.plist", "p");
    write(tree() + "/Users/user/Library/Application Support/X/y", "s");
    write(tree() + "/Users/user/Documents/manual.txt", "d");
    write(tree() + "/Users/user/top.txt", "t");
    write(tree() + "/Users/username/file", "odd");
    runInstallation();
    EXPECT_EQ(outcome(), complete);
    EXPECT_EQ(read(home + "/Library/Preferences/x.plist"), "p");
    EXPECT_EQ(read(home + "/Library/Application Support/X/y"), "s");
    EXPECT_EQ(read(home + "/Dokumente/manual.txt"), "d");
    EXPECT_EQ(read(home + "/top.txt"), "t");
    EXPECT_EQ(read(home + "/name/file"), "odd");
}

TEST_F(Installation, FailsForTheUsersFilesWhenNobodyIsAtTheConsole) {
    identity.uid = 0;
    write(tree() + "/Users/user/top.txt", "t");
    runInstallation();
    EXPECT_EQ(outcome(), refused);
    EXPECT_FALSE(exists("/top.txt"));
    EXPECT_FALSE(exists("top.txt"));
}

TEST_F(Installation, PutsAFileAtTheTreesTopIntoTheWorkingDirectory) {
    const auto before = fs::current_path();
    fs::create_directories(disk / "cwd");
    fs::current_path(disk / "cwd");
    write(tree() + "/bare.txt", "bare");
    write(disk / "cwd/.keep", "");
    runInstallation();
    fs::current_path(before);
    EXPECT_EQ(read(disk / "cwd/bare.txt"), "bare");
}

TEST_F(Installation, TakesNamesAsTheyAre) {
    const std::vector<std::string> names{"line\nbreak", "emoji 🎛️", "e\xCC\x81 combining", std::string(255, 'n'),
                                         "-dash",       "100%@ %n",      "back\\slash",         "colon:name"};
    for (const auto& each : names) {
        write(inTree("d/" + each), each);
    }
    runInstallation();
    EXPECT_EQ(outcome(), complete);
    for (const auto& each : names) {
        EXPECT_EQ(read(target("d/" + each)), each);
    }
}

TEST_F(Installation, KeepsModesAndExecutableScripts) {
    write(inTree("run.sh"), "#!/bin/sh\n");
    ::chmod(inTree("run.sh").c_str(), 0750);
    runInstallation();
    struct stat info {};
    ASSERT_EQ(::stat(target("run.sh").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777U, 0750U);
}

TEST_F(Installation, StopsAtTheFirstFileThatCannotBeCopied) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser may read and write everything";
    }
    write(inTree("secret.txt"), "x");
    ::chmod(inTree("secret.txt").c_str(), 0);
    addResource("postinstall.sh", "touch '" + disk.path() + "/after'\n");
    runInstallation();
    EXPECT_EQ(outcome(), refused);
    EXPECT_FALSE(exists(target("secret.txt")));
    EXPECT_FALSE(exists(disk / "after"));
}

TEST_F(Installation, FailsForAFolderThatMayNotBeWritten) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser may write everywhere";
    }
    write(inTree("closed/one.txt"), "1");
    fs::create_directories(target("closed"));
    ::chmod(target("closed").c_str(), 0555);
    runInstallation();
    EXPECT_EQ(outcome(), refused);
    EXPECT_FALSE(exists(target("closed/one.txt")));
    ::chmod(target("closed").c_str(), 0755);
}

TEST_F(Installation, RunsItsScriptsBeforeAndAfter) {
    write(inTree("one.txt"), "1");
    addResource("preinstall.sh",
                "test ! -e '" + target("one.txt") + "' && echo \"$1|$2\" > '" + disk.path() + "/before'\n");
    addResource("postinstall.sh", "test -e '" + target("one.txt") + "' && touch '" + disk.path() + "/after'\n");
    runInstallation();
    EXPECT_EQ(outcome(), complete);
    EXPECT_EQ(read(disk / "before"), bundle.bundle + "|\n");
    EXPECT_TRUE(exists(disk / "after"));
}

TEST_F(Installation, HandsScriptAndBundleToTheScript) {
    addResource("preinstall.sh", "printf '%s|%s|%s' \"$0\" \"$1\" \"$#\" > '" + disk.path() + "/seen'\n");
    runInstallation();
    EXPECT_EQ(read(disk / "seen"), bundle.resourcesFolder + "/preinstall.sh|" + bundle.bundle + "|1");
}

TEST_F(Installation, CopiesNothingAfterAFailedPreinstallScript) {
    write(inTree("one.txt"), "1");
    addResource("preinstall.sh", "exit 3\n");
    runInstallation();
    EXPECT_EQ(outcome(), scriptFailed);
    EXPECT_FALSE(exists(target("one.txt")));
}

TEST_F(Installation, KeepsTheFilesAfterAFailedPostinstallScript) {
    write(inTree("one.txt"), "1");
    addResource("postinstall.sh", "kill -KILL $$\n");
    runInstallation();
    EXPECT_EQ(outcome(), scriptFailed);
    EXPECT_EQ(read(target("one.txt")), "1");
}

TEST_F(Installation, PrefersTheAppleScriptAndRunsOnlyThat) {
    if (fs::exists("/usr/bin/osascript")) {
        GTEST_SKIP() << "this host has an AppleScript interpreter";
    }
    addResource("preinstall.scpt", "return");
    addResource("preinstall.sh", "touch '" + disk.path() + "/shell'\n");
    runInstallation();
    EXPECT_EQ(outcome(), scriptFailed);  // no interpreter for it here, and the other one is not tried
    EXPECT_FALSE(exists(disk / "shell"));
}

TEST_F(Installation, RunsAScriptWithoutTheExecutableBit) {
    addResource("preinstall.sh", "touch '" + disk.path() + "/ran'\n");
    ::chmod((bundle.resourcesFolder + "/preinstall.sh").c_str(), 0600);
    runInstallation();
    EXPECT_TRUE(exists(disk / "ran"));
}

TEST_F(Installation, IsNotHeldUpByWhatAScriptLeavesRunning) {
    addResource("postinstall.sh", "sleep 30 &\necho started\n");
    const auto start = std::chrono::steady_clock::now();
    runInstallation();
    EXPECT_EQ(outcome(), complete);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST_F(Installation, KeepsInstallDisabledWhateverTheOutcome) {
    addResource("preinstall.sh", "exit 1\n");
    runInstallation();
    EXPECT_FALSE(installButton.enabled);
    EXPECT_FALSE(spinner.animating);
    EXPECT_EQ(spinner.starts, 1);
}

TEST_F(Installation, HasStoppedTheSpinnerWhenItReportsWhateverTheOutcome) {
    const std::function<void()> preparations[] = {
        [this] { addResource("preinstall.sh", "exit 1\n"); },
        [this] {
            addResource("preinstall.sh", "");
            addResource("postinstall.sh", "exit 1\n");
        },
        [this] { addResource("postinstall.sh", ""); },
        [this] {
            identity.uid = 0;  // nobody is there to install for
            write(tree() + "/Users/user/top.txt", "t");
        },
    };
    std::vector<std::string> outcomes;
    whileShown = [&] {
        EXPECT_FALSE(spinner.animating) << outcome();
        EXPECT_FALSE(installButton.enabled) << outcome();
        outcomes.push_back(outcome());
    };
    for (const auto& prepare : preparations) {
        installButton.enabled = true;
        prepare();
        runInstallation();
    }
    EXPECT_EQ(outcomes, (std::vector<std::string>{scriptFailed, scriptFailed, complete, refused}));
    EXPECT_EQ(spinner.starts, 4);
}

TEST_F(Installation, ShowsItsOutcomeOnTheMainWindow) {
    runInstallation();
    ASSERT_EQ(alerts.shown.size(), 1U);
    EXPECT_EQ(alerts.shown[0]->parent, &window);
}

TEST_F(Installation, IsNotStartedWithoutATree) {
    fs::remove_all(tree());
    delegate.install();
    ASSERT_EQ(application.panels.size(), 1U);
    EXPECT_EQ(application.panels[0].second, "This installer has been damaged.");
    EXPECT_EQ(application.terminations, 1);
    EXPECT_TRUE(installButton.enabled);
}

TEST_F(Installation, RunsOnAThreadOfItsOwn) {
    write(inTree("one.txt"), "1");
    delegate.install();
    EXPECT_TRUE(installButton.enabled);  // the worker waits for this thread to serve it
    alerts.answer = [](const fakes::FakeAlerts::Shown&) { return 1; };
    while (alerts.shown.empty() || alerts.shown.back()->visible) {
        mainThread.runNextEvent(std::chrono::milliseconds(10));
    }
    EXPECT_FALSE(installButton.enabled);
    EXPECT_EQ(read(target("one.txt")), "1");
    // The thread closes its alert on this one before it ends.
    for (int slice = 0; slice < 60; ++slice) {
        mainThread.runNextEvent(std::chrono::milliseconds(10));
    }
}

TEST_F(Installation, RunsOnceHoweverFastTheButtonIsPressed) {
    addResource("preinstall.sh", "echo ran >> '" + disk.path() + "/runs'\n");
    alerts.answer = [](const fakes::FakeAlerts::Shown&) { return 1; };
    delegate.install();
    delegate.install();
    while (alerts.shown.empty() || alerts.shown.back()->visible) {
        mainThread.runNextEvent(std::chrono::milliseconds(10));
    }
    // Time for a second run to show itself, and for the first to close its alert.
    for (int slice = 0; slice < 60; ++slice) {
        mainThread.runNextEvent(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(read(disk / "runs"), "ran\n");
    EXPECT_EQ(alerts.shown.size(), 1U);
}

class Placeholders : public Installation, public ::testing::WithParamInterface<std::pair<const char*, const char*>> {};

TEST_P(Placeholders, LeadToTheUsersFolders) {
    const auto& [path, expected] = GetParam();
    const std::string text = expected;
    EXPECT_EQ(delegate.replaceUserPlaceholderInPath(path), text.starts_with("~") ? home + text.substr(1) : text);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, Placeholders,
    ::testing::Values(std::pair{"/Users/user/Library/Preferences/x.plist", "~/Library/Preferences/x.plist"},
                      std::pair{"/Users/user/Library/PreferencesX/y", "~/Library/Preferences/X/y"},
                      std::pair{"/Users/user/Library/Application Support/a/b", "~/Library/Application Support/a/b"},
                      std::pair{"/Users/user/Documents/m", "~/Dokumente/m"},
                      std::pair{"/Users/user/Library/Caches/c", "~/Library/Caches/c"}, std::pair{"/Users/user", "~"},
                      std::pair{"/Users/username/file", "~/name/file"}, std::pair{"/Users/use", "/Users/use"},
                      std::pair{"/users/user/x", "/users/user/x"},
                      std::pair{"/Library/Users/user/x", "/Library/Users/user/x"}, std::pair{"bare", "bare"}));

}  // namespace
