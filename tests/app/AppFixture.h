// The delegate over fake controls, with a bundle and a home folder in a temporary place and the real file services.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <thread>

#include "app/WickfieldAppDelegate.h"
#include "lib/KZLog.h"
#include "platform/linux/services/LinuxHost.h"
#include "tests/fakes/FakeAlerts.h"
#include "tests/fakes/FakeApplication.h"
#include "tests/fakes/FakeConsole.h"
#include "tests/fakes/FakeControls.h"
#include "tests/fakes/FakeIdentity.h"
#include "tests/fakes/FakeMainBundle.h"
#include "tests/fakes/FakeMainThread.h"
#include "tests/fakes/FakeStandardFolders.h"
#include "tests/fakes/FakeSystemInfo.h"
#include "tests/fakes/TemporaryFolder.h"

namespace fs = std::filesystem;

class AppFixture : public ::testing::Test {
protected:
    AppFixture() {
        using platform::FolderDomain;
        using platform::FolderKind;
        identity.home = home;
        folders.paths[{FolderKind::library, FolderDomain::user}] = {home + "/Library"};
        folders.paths[{FolderKind::applicationSupport, FolderDomain::user}] = {home + "/Library/Application Support"};
        folders.paths[{FolderKind::documents, FolderDomain::user}] = {home + "/Dokumente"};
        folders.temporary = disk.path();
        bundle.bundle = disk / "Plug Installer.app";
        bundle.resourcesFolder = bundle.bundle + "/Contents/Resources";
        fs::create_directories(tree());
        fs::create_directories(home);
    }

    // The log's writer uses the host until it has nothing left to write.
    ~AppFixture() override { KZLog::finishWriting(); }

    std::string tree() const { return bundle.resourcesFolder + "/PluginStructure"; }

    static void write(const fs::path& path, const std::string& contents) {
        fs::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << contents;
    }
    static std::string read(const fs::path& path) {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }

    void writeSettings(const std::string& contents) {
        const auto path = bundle.resourcesFolder + "/InstallerSettings.plist";
        write(path, contents);
        bundle.resources["InstallerSettings.plist"] = path;
    }
    void addResource(const std::string& file, const std::string& contents) {
        write(bundle.resourcesFolder + "/" + file, contents);
        bundle.resources[file] = bundle.resourcesFolder + "/" + file;
    }

    platform::Host makeHost() {
        auto host = platform::linux_host::services();
        host.identity = &identity;
        host.folders = &folders;
        host.bundle = &bundle;
        host.system = &system;
        host.mainThread = &mainThread;
        host.console = &console;
        host.application = &application;
        host.alerts = &alerts;
        return host;
    }

    platform::Outlets outlets() {
        return {.window = &window,
                .textPluginName = &name,
                .textPluginAuthor = &author,
                .textPluginVersion = &version,
                .spinner = &spinner,
                .btnInstall = &installButton,
                .tallowmereLinkText = &branding,
                .bgImageView = &image,
                .btnGantry = &handOff,
                .windowEULA = &agreementSheet,
                .eulaText = &agreementText};
    }

    // Runs the installation as the program does: on a thread of its own, with the main thread serving. Every alert is
    // answered by its default button.
    void runInstallation() {
        alerts.answer = [this](const fakes::FakeAlerts::Shown&) {
            if (whileShown) {
                whileShown();
            }
            return 1;
        };
        std::atomic<bool> ended = false;
        std::thread worker([&] {
            delegate.beginInstallation(tree());
            ended = true;
        });
        while (!ended) {
            mainThread.runNextEvent(std::chrono::milliseconds(10));
        }
        worker.join();
    }

    std::string outcome() const {
        return alerts.shown.empty()
                   ? "nothing shown"
                   : alerts.shown.back()->contents.messageText + ": " + alerts.shown.back()->contents.informativeText;
    }

    std::function<void()> whileShown;  // called while runInstallation's outcome is on the screen

    fakes::TemporaryFolder disk;
    std::string home = disk / "home/ada";
    fakes::FakeIdentity identity;
    fakes::FakeStandardFolders folders;
    fakes::FakeMainBundle bundle;
    fakes::FakeSystemInfo system;
    fakes::FakeMainThread mainThread;
    fakes::FakeConsole console;
    fakes::FakeApplication application;
    fakes::FakeAlerts alerts;

    fakes::FakeWindow window;
    fakes::FakeWindow agreementSheet;
    fakes::FakeTextField name;
    fakes::FakeTextField author;
    fakes::FakeTextField version;
    fakes::FakeTextField branding;
    fakes::FakeProgressIndicator spinner;
    fakes::FakeButton installButton;
    fakes::FakeButton handOff;
    fakes::FakeImageView image;
    fakes::FakeTextView agreementText;

    platform::ScopedHost scope{makeHost()};
    WickfieldAppDelegate delegate{outlets()};
};
