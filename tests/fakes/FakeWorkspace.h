#pragma once

#include <filesystem>
#include <map>
#include <set>

#include "platform/ports/Workspace.h"

namespace fakes {

// Remembers what it was told. Recycling really moves the item into the Trash folder, unless it is to be refused.
class FakeWorkspace : public platform::Workspace {
public:
    struct Recycled {
        std::string folder;
        std::string name;
        std::string trashFolder;
        friend bool operator==(const Recycled&, const Recycled&) = default;
    };

    std::set<std::string> packages;
    platform::Failure recycleFailure;
    std::vector<Recycled> recycled;
    std::vector<std::string> mountPoints{"/"};
    std::vector<std::string> notes;
    std::vector<std::optional<std::string>> finderUpdates;
    int finderStatus = 0;
    bool opens = true;
    std::vector<std::string> openedURLs;
    std::map<std::string, std::string> applications;  // paths by identifier
    platform::Failure registerFailure;
    std::vector<std::string> registered;

    bool isFilePackage(const std::string& path) override { return packages.contains(path); }

    platform::Failure recycle(const std::string& folder, const std::string& name,
                              const std::string& trashFolder) override {
        recycled.push_back({.folder = folder, .name = name, .trashFolder = trashFolder});
        if (recycleFailure) {
            return recycleFailure;
        }
        std::filesystem::create_directories(trashFolder);
        const std::string wanted = trashFolder + "/" + name;
        std::string target = wanted;
        for (int number = 2; std::filesystem::exists(std::filesystem::symlink_status(target)); ++number) {
            target = wanted;
            target.append(" ").append(std::to_string(number));
        }
        std::error_code error;
        std::filesystem::rename(folder + "/" + name, target, error);
        return error ? platform::Failure(platform::Error{error.value(), error.message()}) : std::nullopt;
    }

    std::vector<std::string> mountedLocalVolumePaths() override { return mountPoints; }
    void noteFileSystemChanged(const std::string& path) override { notes.push_back(path); }
    int sendFinderUpdate(const std::optional<std::string>& path) override {
        finderUpdates.push_back(path);
        return finderStatus;
    }
    bool openURL(const std::string& url) override {
        openedURLs.push_back(url);
        return opens;
    }
    std::optional<std::string> applicationWithIdentifier(const std::string& identifier) override {
        const auto found = applications.find(identifier);
        return found == applications.end() ? std::nullopt : std::optional(found->second);
    }
    bool openURLs(const std::vector<std::string>& urls, const std::string& identifier) override {
        openedURLs.insert(openedURLs.end(), urls.begin(), urls.end());
        return opens && applications.contains(identifier);
    }
    platform::Failure registerApplication(const std::string& bundlePath) override {
        registered.push_back(bundlePath);
        return registerFailure;
    }
};

}  // namespace fakes
