// Copies over real files whose single operations can be made to fail, with a delegate that writes down what it is told.
#pragma once

#include <atomic>
#include <cerrno>
#include <mutex>

#include "lib/KZFileManager/Copying.h"
#include "tests/fakes/FailingOpenFiles.h"
#include "tests/fakes/FakeBackgroundQueue.h"
#include "tests/lib/FilesFixture.h"

class CopyingFixture : public FilesFixture {
protected:
    using Verification = KZFileManager::FileCopyVerification;
    using Settings = KZFileManager::FileCopySettings;
    using OpenOperation = fakes::FailingOpenFiles::Operation;
    using OpenCall = fakes::FailingOpenFiles::Call;
    using Outcome = fakes::FailingOpenFiles::Outcome;

    static constexpr std::uint64_t mebibyte = 1048576;

    CopyingFixture() {
        delegate->fileCopyBytesWritten = [this](std::uint64_t bytes, const Settings& settings) {
            const std::lock_guard lock(m_mutex);
            reports.push_back(bytes);
            reportThread = std::this_thread::get_id();
            reportSettings = settings;
        };
        delegate->fileCopyShouldContinue = [this](const Settings&) {
            ++questions;
            return goOn.load();
        };
        delegate->fileCopyVerificationFailed = [this](const Settings& settings, const std::string& file) {
            failedFiles.push_back(file);
            failedFilesWereThere = failedFilesWereThere && stands(file);
            finalSettings = settings;
        };
        delegate->fileCopyFinished = [this](const Settings& settings) {
            ++finished;
            finishedThread = std::this_thread::get_id();
            finalSettings = settings;
        };
    }

    bool copy(const std::string& source, const std::vector<std::string>& destinations,
              Verification verification = Verification::none) {
        return KZFileManager::copyFileWithProgress(source, destinations, verification, delegate, {}, {});
    }

    std::string addHole(const std::string& name, std::uint64_t size) {
        std::string path = add(name, "");
        std::filesystem::resize_file(path, size);
        return path;
    }

    // Makes one operation on one path fail or move less: on the numbers that are given, or on each.
    void fail(OpenOperation operation, const std::string& path, Outcome outcome,
              std::vector<std::size_t> numbers = {}) {
        openFiles.decide = [=](const OpenCall& call) {
            const bool hits =
                call.operation == operation && call.path == path &&
                (numbers.empty() || std::find(numbers.begin(), numbers.end(), call.number) != numbers.end());
            return hits ? outcome : Outcome{};
        };
    }

    static std::string text(const Settings& settings, const std::string& key) {
        const auto found = settings.find(key);
        const auto* const value = found == settings.end() ? nullptr : found->second.as<std::string>();
        return value == nullptr ? "none" : *value;
    }
    static std::vector<std::string> texts(const Settings& settings, const std::string& key) {
        const auto found = settings.find(key);
        const auto* const value = found == settings.end() ? nullptr : found->second.as<std::vector<std::string>>();
        return value == nullptr ? std::vector<std::string>{"none"} : *value;
    }
    static std::size_t descriptors() {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator()));
    }

    platform::Host copyingHost() {
        auto host = platform::host();
        host.openFiles = &openFiles;
        host.background = &queue;
        return host;
    }

    fakes::FailingOpenFiles openFiles{*platform::linux_host::services().openFiles};
    fakes::FakeBackgroundQueue queue;
    platform::ScopedHost hostOfThisTest{copyingHost()};

    std::shared_ptr<KZFileManager::FileCopyDelegate> delegate = std::make_shared<KZFileManager::FileCopyDelegate>();
    std::atomic<bool> goOn = true;
    std::atomic<int> questions = 0;
    std::vector<std::uint64_t> reports;
    std::thread::id reportThread;
    Settings reportSettings;
    std::vector<std::string> failedFiles;
    bool failedFilesWereThere = true;
    int finished = 0;
    std::thread::id finishedThread;
    Settings finalSettings;

private:
    std::mutex m_mutex;
};
