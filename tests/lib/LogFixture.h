// The log over real files, as an ordinary user with a Library in a temporary folder; each test begins a process's log.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "lib/KZLog.h"
#include "platform/linux/services/LinuxHost.h"
#include "tests/fakes/FailingFileManager.h"
#include "tests/fakes/FakeApplication.h"
#include "tests/fakes/FakeIdentity.h"
#include "tests/fakes/FakeMainBundle.h"
#include "tests/fakes/FakeMainThread.h"
#include "tests/fakes/FakeStandardFolders.h"
#include "tests/fakes/FakeSystemInfo.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/lib/KZLogTesting.h"

class LogFixture : public testing::Test {
public:
    ~LogFixture() override { KZLogTesting::beginAfresh(); }

protected:
    using Operation = fakes::FailingFileManager::Operation;
    using Lines = std::vector<std::string>;

    static constexpr std::size_t lineOverhead = 29;  // the date, " - " and the line break

    LogFixture() {
        using platform::FolderDomain;
        using platform::FolderKind;
        KZLogTesting::beginAfresh();
        identity.home = disk / "home";
        identity.homes["ada"] = identity.home;
        folders.paths[{FolderKind::library, FolderDomain::user}] = {userLibrary};
        folders.paths[{FolderKind::library, FolderDomain::local}] = {localLibrary};
        bundle.info["CFBundleVersion"] = {.value = std::string("1.2.3")};
        std::filesystem::create_directories(userLibrary);
    }
    // As the superuser, for whom the host answers with the superuser's own folders.
    void becomeSuperuser() {
        identity.uid = 0;
        identity.console = "ada";
        folders.paths[{platform::FolderKind::library, platform::FolderDomain::user}] = {"/var/root/Library"};
    }

    std::string log(int number, const std::string& name = "Test") const {
        return logs + "/" + name + "." + std::to_string(number) + ".log";
    }
    static void write(const std::string& path, const std::string& contents) {
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << contents;
    }
    static std::string read(const std::string& path) {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }
    static bool stands(const std::string& path) { return std::filesystem::exists(path); }

    // The texts of the entries in a file, without their dates.
    static Lines entries(const std::string& path) {
        std::istringstream lines(read(path));
        Lines texts;
        for (std::string line; std::getline(lines, line);) {
            texts.push_back(line.size() > lineOverhead - 1 ? line.substr(lineOverhead - 1) : line);
        }
        return texts;
    }
    // The entries of the current log behind its header.
    Lines entries() const {
        KZLog::finishWriting();
        Lines texts = entries(log(1));
        const auto header = std::find(texts.begin(), texts.end(), "Running in 64-bit mode");
        return header == texts.end() ? texts : Lines(header + 1, texts.end());
    }

    void setPreference(const platform::PropertyValue& value) {
        const platform::PropertyDictionary preferences{{"disable-logging", value}};
        write(userLibrary + "/Preferences/com.corvane.global.plist",
              platform::linux_host::services().propertyLists->serialize({.value = preferences}));
    }

    static std::string printed(const std::function<void()>& work) {
        testing::internal::CaptureStdout();
        work();
        KZLog::finishWriting();
        return testing::internal::GetCapturedStdout();
    }
    static void onAnotherThread(const std::function<void()>& work) { std::thread(work).join(); }

    platform::Host makeHost() {
        platform::Host host = platform::linux_host::services();
        host.files = &files;
        host.folders = &folders;
        host.identity = &identity;
        host.bundle = &bundle;
        host.system = &system;
        host.mainThread = &mainThread;
        host.application = &application;
        return host;
    }

    fakes::TemporaryFolder disk;
    const std::string userLibrary = disk / "home/Library";
    const std::string localLibrary = disk / "Library";
    const std::string logs = userLibrary + "/Logs/Corvane";

    fakes::FailingFileManager files{*platform::linux_host::services().files};
    fakes::FakeStandardFolders folders;
    fakes::FakeIdentity identity;
    fakes::FakeMainBundle bundle;
    fakes::FakeSystemInfo system;
    fakes::FakeMainThread mainThread;
    fakes::FakeApplication application;
    platform::ScopedHost m_hostForThisTest{makeHost()};
};
