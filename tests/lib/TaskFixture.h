// Tools run for real, logged to a file in a temporary home folder; the test's thread is the main thread.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "lib/KZLog.h"
#include "lib/KZTaskEx.h"
#include "platform/linux/services/LinuxHost.h"
#include "platform/posix/MainQueue.h"
#include "platform/posix/ProcessLauncher.h"
#include "tests/fakes/FakeIdentity.h"
#include "tests/fakes/FakeMainBundle.h"
#include "tests/fakes/FakeProcesses.h"
#include "tests/fakes/FakeStandardFolders.h"
#include "tests/fakes/FakeWorkspace.h"
#include "tests/fakes/TemporaryFolder.h"

class TaskFixture : public ::testing::Test {
public:
    TaskFixture() {
        using platform::FolderDomain;
        using platform::FolderKind;
        identity.home = disk / "home";
        folders.paths[{FolderKind::library, FolderDomain::user}] = {disk / "home/Library"};
        std::filesystem::create_directories(disk / "home/Library");
        KZLog::createNewLog("Tasks");
        newLogEntries();
        ::testing::internal::CaptureStdout();
    }
    ~TaskFixture() override {
        ::testing::internal::GetCapturedStdout();
        KZLog::finishWriting();
    }

protected:
    using Clock = std::chrono::steady_clock;
    using Seconds = KZTaskEx::Seconds;
    using Strings = std::vector<std::string>;

    std::string add(const std::string& name, const std::string& contents, bool executable = true) {
        std::ofstream(disk / name, std::ios::binary) << contents;
        std::filesystem::permissions(disk / name, std::filesystem::perms(executable ? 0755U : 0644U));
        return disk / name;
    }
    static std::string read(const std::string& path) {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return text.str();
    }
    static bool appearsWithin(const std::string& path, std::chrono::milliseconds limit) {
        const auto deadline = Clock::now() + limit;
        while (read(path).empty() && Clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds{2});
        }
        return !read(path).empty();
    }

    // What was printed since the last call.
    static std::string newPrint() {
        std::string text = ::testing::internal::GetCapturedStdout();
        ::testing::internal::CaptureStdout();
        return text;
    }

    // The texts of the entries since the last call; the log's own header counts as read.
    Strings newLogEntries() {
        KZLog::finishWriting();
        std::istringstream log(read(disk / "home/Library/Logs/Corvane/Tasks.1.log"));
        Strings entries;
        for (std::string line; std::getline(log, line);) {
            const auto text = line.find(" - ");
            entries.push_back(text == std::string::npos ? line : line.substr(text + 3));
        }
        Strings unread(entries.begin() + static_cast<std::ptrdiff_t>(m_entriesRead), entries.end());
        m_entriesRead = entries.size();
        return unread;
    }

    static KZTaskEx::Arguments script(const std::string& text) { return {"-c", text}; }

    // The tools of the host that only seem to run, for the rest of the test.
    fakes::FakeProcesses& pretendTools() {
        pretended.emplace(with(pretendedTools));
        return pretendedTools;
    }
    platform::Host with(platform::Processes& processes) {
        auto host = makeHost();
        host.processes = &processes;
        return host;
    }
    platform::Host makeHost() {
        auto host = platform::linux_host::services();
        host.workspace = &workspace;
        host.folders = &folders;
        host.identity = &identity;
        host.bundle = &bundle;
        host.processes = &launcher;
        host.mainThread = &mainThread;
        return host;
    }

    fakes::TemporaryFolder disk;
    fakes::FakeWorkspace workspace;
    fakes::FakeStandardFolders folders;
    fakes::FakeIdentity identity;
    fakes::FakeMainBundle bundle;
    platform::posix::ProcessLauncher launcher;
    platform::posix::MainQueue mainThread;
    fakes::FakeProcesses pretendedTools;
    platform::ScopedHost current{makeHost()};
    std::optional<platform::ScopedHost> pretended;

private:
    std::size_t m_entriesRead = 0;
};
