#include "platform/linux/services/workspace/ApplicationEntry.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "platform/linux/services/workspace/DesktopEntries.h"
#include "platform/linux/services/workspace/LinuxWorkspace.h"
#include "tests/fakes/FakeIdentity.h"
#include "tests/fakes/ScopedEnvironment.h"
#include "tests/linux/FilesFixture.h"

namespace {

using platform::linux_host::applicationEntry;
using platform::linux_host::BundleApplication;
using platform::linux_host::commandLine;
using platform::linux_host::isUsableIdentifier;
using platform::linux_host::parseDesktopEntry;
using platform::linux_host::writeApplicationEntry;

class RegisteringABundle : public FilesFixture {
protected:
    void SetUp() override { makeFolder("data"); }

    // A bundle with a program that notes its first argument in the file "seen" beside the bundle.
    std::string makeBundle(const std::string& name, const std::string& information,
                           const std::string& executable = "Gantry") const {
        makeFolder(name + "/Contents/Linux");
        write(name + "/Contents/Info.plist", information);
        if (!executable.empty()) {
            const auto program = name + "/Contents/Linux/" + executable;
            write(program, "#!/bin/sh\nprintf %s \"$1\" > \"${0%/*}/part\"; mv \"${0%/*}/part\" \"${0%/*}/seen\"\n");
            setMode(program, 0755);
        }
        return at(name);
    }
    static std::string information(const std::string& identifier = "com.example.Gantry") {
        return "{ CFBundleIdentifier = \"" + identifier + "\"; CFBundleExecutable = Gantry; }";
    }
    bool registers(const std::string& bundle) const { return !writeApplicationEntry(bundle, at("data")); }
    bool appears(const std::string& name) const {
        for (int i = 0; i < 1000 && !isThere(name); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return isThere(name);
    }

    const std::string entry = "data/applications/com.example.Gantry.desktop";
};

TEST_F(RegisteringABundle, WritesAnEntryNamedAfterItsIdentifier) {
    const auto bundle = makeBundle("Gantry.app", information());
    ASSERT_TRUE(registers(bundle));
    const auto program = bundle + "/Contents/Linux/Gantry";
    EXPECT_EQ(read(entry), "[Desktop Entry]\nType=Application\nName=Gantry\nTryExec=" + program + "\nExec=\"" +
                               program + "\" %U\nTerminal=false\n");
    EXPECT_EQ(names("data/applications").size(), 1U);
}

TEST_F(RegisteringABundle, MakesTheDataFolderThatIsMissing) {
    const auto bundle = makeBundle("Gantry.app", information());
    EXPECT_FALSE(writeApplicationEntry(bundle, at("far/away")));
    EXPECT_TRUE(isThere("far/away/applications/com.example.Gantry.desktop"));
}

TEST_F(RegisteringABundle, TwiceLeavesTheEntryAlone) {
    const auto bundle = makeBundle("Gantry.app", information());
    ASSERT_TRUE(registers(bundle));
    const auto before = status(entry);
    ASSERT_TRUE(registers(bundle));
    EXPECT_EQ(status(entry).st_ino, before.st_ino);
}

TEST_F(RegisteringABundle, AgainAfterItHasMovedReplacesTheEntry) {
    ASSERT_TRUE(registers(makeBundle("Gantry.app", information())));
    const auto moved = makeBundle("elsewhere/Gantry.app", information());
    ASSERT_TRUE(registers(moved));
    EXPECT_NE(read(entry).find(moved), std::string::npos);
    EXPECT_EQ(names("data/applications").size(), 1U);
}

TEST_F(RegisteringABundle, ShowsItsNameAndPicture) {
    const auto bundle =
        makeBundle("Gantry.app",
                   "{ CFBundleIdentifier = \"com.example.Gantry\"; CFBundleExecutable = Gantry; CFBundleName = "
                   "Short; CFBundleDisplayName = \"Gantry Manager\"; CFBundleIconFile = \"App.icns\"; }");
    makeFolder("Gantry.app/Contents/Resources");
    write("Gantry.app/Contents/Resources/App.icns", "");
    write("Gantry.app/Contents/Resources/App.png", "");
    ASSERT_TRUE(registers(bundle));
    const auto parsed = parseDesktopEntry(read(entry));
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->name, "Gantry Manager");
    EXPECT_EQ(parsed->icon, bundle + "/Contents/Resources/App.png");
}

TEST_F(RegisteringABundle, TakesTheBundlesNameForWhatIsNotSaid) {
    const auto bundle = makeBundle("Gantry.app", "{ CFBundleIdentifier = \"com.example.Gantry\"; }");
    ASSERT_TRUE(registers(bundle + "//"));
    EXPECT_EQ(parseDesktopEntry(read(entry))->name, "Gantry");
}

TEST_F(RegisteringABundle, RefusesWhatIsNoApplicationBundle) {
    write("file.app", "x");
    makeFolder("empty.app");
    makeBundle("Plug.component", information());
    makeBundle(".app", information());
    for (const char* name : {"missing.app", "file.app", "empty.app", "Plug.component", ".app"}) {
        EXPECT_FALSE(registers(at(name))) << name;
    }
    EXPECT_FALSE(registers(""));
    EXPECT_FALSE(registers("Gantry.app"));
    EXPECT_FALSE(registers(std::string("/a\0.app", 7)));
    EXPECT_FALSE(isThere("data/applications"));
}

TEST_F(RegisteringABundle, RefusesDamagedInformation) {
    for (const std::string& text : {std::string(), std::string("garbage {"), std::string("( a, b )"),
                                    std::string("{ CFBundleIdentifier = ( a ); }"), std::string(2'000'000, ' ')}) {
        EXPECT_FALSE(registers(makeBundle("Gantry.app", text)));
    }
}

TEST_F(RegisteringABundle, RefusesAHostileIdentifier) {
    for (const char* identifier :
         {"", ".", "..", "../evil", "a/b", "/etc/passwd", "a..b", ".hidden", "-x", "a b", "ä", "a\\nb", "a."}) {
        EXPECT_FALSE(registers(makeBundle("Gantry.app", information(identifier)))) << identifier;
    }
    EXPECT_FALSE(registers(makeBundle("Gantry.app", information(std::string(201, 'a')))));
    EXPECT_FALSE(isThere("data/applications"));
}

TEST_F(RegisteringABundle, RefusesAProgramOutsideTheBundleOrNone) {
    for (const char* executable : {"../../../tool", "/bin/sh", "..", "missing"}) {
        EXPECT_FALSE(registers(makeBundle("Gantry.app",
                                          "{ CFBundleIdentifier = \"com.example.Gantry\"; "
                                          "CFBundleExecutable = \"" +
                                              std::string(executable) + "\"; }")))
            << executable;
    }
    const auto bundle = makeBundle("Gantry.app", information());
    setMode("Gantry.app/Contents/Linux/Gantry", 0644);
    EXPECT_FALSE(registers(bundle));
}

TEST_F(RegisteringABundle, FailsWhereNoEntryCanBeWritten) {
    const auto bundle = makeBundle("Gantry.app", information());
    write("file", "x");
    EXPECT_TRUE(writeApplicationEntry(bundle, at("file")));
    makeFolder(entry);
    EXPECT_TRUE(writeApplicationEntry(bundle, at("data")));
}

TEST_F(RegisteringABundle, LetsItBeFoundAndOpenedByItsIdentifier) {
    fakes::FakeIdentity identity;
    identity.home = at("home");
    makeFolder("home");
    const fakes::ScopedEnvironment dataHome("XDG_DATA_HOME", "");
    const fakes::ScopedEnvironment dataFolders("XDG_DATA_DIRS", at("system"));
    platform::linux_host::LinuxWorkspace workspace(identity);
    // Every character that means something to a desktop entry, a command line or a shell.
    const std::string name = "Gan try \"q\" 'a' $HOME `x` \\n %U%% = ; & #\n\t~*.app";
    const auto bundle = makeBundle(name, information());
    ASSERT_FALSE(workspace.registerApplication(bundle));
    EXPECT_TRUE(isThere("home/.local/share/applications/com.example.Gantry.desktop"));
    EXPECT_EQ(workspace.applicationWithIdentifier("com.example.Gantry"), bundle);
    EXPECT_TRUE(workspace.openURLs({"file:///a%20b"}, "com.example.Gantry"));
    ASSERT_TRUE(appears(name + "/Contents/Linux/seen"));
    EXPECT_EQ(read(name + "/Contents/Linux/seen"), "file:///a%20b");
}

TEST(ApplicationEntries, KeepEveryCharacterOfNamesAndPaths) {
    std::string all = "/";
    for (int character = 1; character < 256; ++character) {
        all += static_cast<char>(character);
    }
    const BundleApplication application{"com.example.All", " lead" + all + " ", all, all + ".png "};
    const auto entry = parseDesktopEntry(applicationEntry(application));
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->name, application.name);
    EXPECT_EQ(entry->icon, application.icon);
    EXPECT_EQ(commandLine(*entry, {"u1", "u2"}), (std::vector<std::string>{all, "u1", "u2"}));
}

TEST(ApplicationEntries, AreOneLineForEachKey) {
    const auto text = applicationEntry({"a.b", "line\nExec=evil", "/p\nHidden=true", ""});
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 6);
}

TEST(ApplicationIdentifiers, AreLettersDigitsDashesAndSingleDots) {
    for (const char* usable : {"com.corvane.Gantry", "a", "A-b_c.9"}) {
        EXPECT_TRUE(isUsableIdentifier(usable)) << usable;
    }
    EXPECT_FALSE(isUsableIdentifier(std::string_view("a\0b", 3)));
}

}  // namespace
