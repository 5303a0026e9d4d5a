// The file operations over real files and real tools, as an ordinary user with a home folder in a temporary place.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "lib/KZFileManager.h"
#include "lib/KZLog.h"
#include "platform/linux/services/LinuxHost.h"
#include "tests/fakes/FailingFileManager.h"
#include "tests/fakes/FakeAuthorization.h"
#include "tests/fakes/FakeConsole.h"
#include "tests/fakes/FakeIdentity.h"
#include "tests/fakes/FakeMainBundle.h"
#include "tests/fakes/FakeMainThread.h"
#include "tests/fakes/FakeStandardFolders.h"
#include "tests/fakes/FakeWorkspace.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/lib/KZAuthorizationReset.h"
#include "tests/lib/KZLogTesting.h"
#include "tests/lib/RecordingProcesses.h"

class FilesFixture : public ::testing::Test {
protected:
    using Operation = fakes::FailingFileManager::Operation;
    using Call = fakes::FailingFileManager::Call;

    FilesFixture() {
        using platform::FolderDomain;
        using platform::FolderKind;
        identity.home = home;
        folders.paths[{FolderKind::library, FolderDomain::user}] = {home + "/Library"};
        folders.paths[{FolderKind::library, FolderDomain::local}] = {disk / "Library"};
        folders.temporary = disk / "tmp";
        std::filesystem::create_directories(folders.temporary);
        std::filesystem::create_directories(home + "/Library");
        KZLogTesting::beginAfresh();  // another fixture may have named the process's log
        KZLog::createNewLog("Files");
        newLogEntries();
    }
    void TearDown() override { KZLog::finishWriting(); }

    // An item below the temporary folder. A path that ends in "/" makes a folder.
    std::string add(const std::string& name, const std::string& contents = "contents") {
        std::string path = disk / name;
        if (path.ends_with('/')) {
            path.pop_back();
            std::filesystem::create_directories(path);
            return path;
        }
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << contents;
        return path;
    }
    std::string addLink(const std::string& name, const std::string& target) {
        std::filesystem::create_symlink(target, disk / name);
        return disk / name;
    }
    static std::string read(const std::string& path) {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }
    std::vector<platform::DirectoryEntry> listing(const std::string& folder) {
        return files.contentsOfDirectory(folder).value();
    }
    // Whether anything stands there, a dangling link included.
    static bool stands(const std::string& path) {
        return std::filesystem::exists(std::filesystem::symlink_status(path));
    }

    // The texts of the entries since the last call; the log's own header counts as read.
    std::vector<std::string> newLogEntries() {
        KZLog::finishWriting();
        std::istringstream log(read(home + "/Library/Logs/Corvane/Files.1.log"));
        std::vector<std::string> entries;
        for (std::string line; std::getline(log, line);) {
            const auto text = line.find(" - ");
            entries.push_back(text == std::string::npos ? line : line.substr(text + 3));
        }
        const auto alreadyRead = std::exchange(m_entriesRead, entries.size());
        entries.erase(entries.begin(), entries.begin() + static_cast<std::ptrdiff_t>(alreadyRead));
        return entries;
    }

    void makeSuperuser() { identity.uid = 0; }

    platform::Host makeHost() {
        auto host = platform::linux_host::services();
        host.files = &files;
        host.workspace = &workspace;
        host.folders = &folders;
        host.identity = &identity;
        host.bundle = &bundle;
        host.processes = &processes;
        host.mainThread = &mainThread;
        host.console = &console;
        host.authorization = &authorization;
        return host;
    }

    fakes::TemporaryFolder disk;
    const std::string home = disk / "home";
    const std::string trash = home + "/.Trash";

    fakes::FailingFileManager files{*platform::linux_host::services().files};
    fakes::FakeWorkspace workspace;
    fakes::FakeStandardFolders folders;
    fakes::FakeIdentity identity;
    fakes::FakeMainBundle bundle;
    fakes::FakeMainThread mainThread;
    fakes::FakeConsole console;
    fakes::FakeAuthorization authorization;
    RecordingProcesses processes{*platform::linux_host::services().processes};
    platform::ScopedHost scopedHost{makeHost()};
    KZAuthorizationReset freshSession;

private:
    std::size_t m_entriesRead = 0;
};
