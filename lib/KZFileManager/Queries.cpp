#include "lib/KZFileManager/Queries.h"

#include <string_view>
#include <variant>
#include <vector>

#include "lib/KZFileManager/FolderTrail.h"
#include "lib/KZFileManager/Mutations.h"
#include "lib/KZLocalPaths.h"
#include "lib/KZLog.h"
#include "lib/KZTaskEx.h"
#include "lib/base/Format.h"
#include "lib/base/PathText.h"
#include "lib/base/ToolArgument.h"
#include "platform/ports/Host.h"

namespace {

platform::FileManager& files() { return *platform::host().files; }

// The volume of a path of the form "/Volumes/Name/..." with the slashes of its first three components joined as they
// come: "//Volumes/Name". None when the path does not reach as far as the name.
std::optional<std::string> volumeRoot(const std::string& path) {
    const auto components = kz::pathComponents(path);
    if (components.size() < 3) {
        return {};
    }
    return components[0] + "/" + components[1] + "/" + components[2];
}

bool isVolumeThere(const std::string& path) {
    const auto root = volumeRoot(path);
    return !root || KZFileManager::fileExistsAtPath(*root);
}

void setLocked(const std::string& path, bool locked) {
    if (const auto failure = files().setImmutable(path, locked)) {
        KZLog::fastAppendLog("Unable to unlock file %@: %@", path, failure->description);
    }
}

void setLockedInside(const std::string& folder, bool locked, KZFileManager::FolderTrail& trail) {
    const KZFileManager::FolderTrail::Step step(trail, folder);
    if (step.isLoop()) {
        return;
    }
    for (const auto& entry : files().contentsOfDirectory(folder).value_or(std::vector<platform::DirectoryEntry>{})) {
        const std::string path = kz::appendPathComponent(folder, entry.name);
        if (KZFileManager::isFolderEntry(entry, path)) {
            setLockedInside(path, locked, trail);
        } else {
            setLocked(path, locked);
        }
    }
}

}  // namespace

namespace KZFileManager {

bool fileExistsAtPath(const std::string& path) { return files().fileExists(path); }

bool isDirectoryAtPath(const std::string& path) { return files().isFolder(path); }

bool isPackageAtPath(const std::string& path) { return platform::host().workspace->isFilePackage(path); }

bool isSymbolicLinkAtPath(const std::string& path) { return files().destinationOfSymbolicLink(path).has_value(); }

bool isVolumeMountedForPath(const std::string& path) { return !path.starts_with("/Volumes") || isVolumeThere(path); }

bool isDriveMountedForPath(const std::string& path) { return !path.starts_with("/Volumes/") || isVolumeThere(path); }

std::optional<std::string> volumeMountPointForPath(const std::string& path) {
    for (const auto& mountPoint : platform::host().workspace->mountedLocalVolumePaths()) {
        if (mountPoint != "/" && (path == mountPoint || path.starts_with(mountPoint + "/"))) {
            return mountPoint;
        }
    }
    if (path.starts_with("/Volumes")) {
        return {};
    }
    return "/";
}

std::optional<platform::Date> modificationDateForFile(const std::string& path) {
    const auto attributes = files().attributes(path);
    return attributes ? std::optional(attributes->modificationDate) : std::nullopt;
}

std::optional<platform::Date> creationDateForFile(const std::string& path) {
    const auto attributes = files().attributes(path);
    return attributes ? attributes->creationDate : std::nullopt;
}

std::optional<platform::PropertyDictionary> infoForDiskAtMountpoint(const std::string& mountPoint) {
    const auto data = KZTaskEx::dataFromTask("/usr/sbin/diskutil", {"info", "-plist", kz::toolArgument(mountPoint)},
                                             KZTaskEx::Seconds{5.0});
    if (!data || data->empty()) {
        return {};
    }
    auto parsed = platform::host().propertyLists->parse(*data);
    if (const auto* error = std::get_if<platform::Error>(&parsed)) {
        platform::host().console->log(kz::format("Error converting diskutil output: %@", error->description));
        return {};
    }
    const auto* dictionary = std::get<platform::PropertyValue>(parsed).as<platform::PropertyDictionary>();
    return dictionary != nullptr ? std::optional(*dictionary) : std::nullopt;
}

bool createEmptyFile(const std::string& path) {
    const std::string temporary = KZLocalPaths::tempFile();
    if (files().writeAtomically(temporary, {})) {
        return false;
    }
    // What stands at the path is refused by the plain move; with administrator rights it would be replaced.
    const bool moved = moveFile(temporary, path, fileExistsAtPath(path) ? ShouldAuth::no : ShouldAuth::yes);
    if (!moved) {
        files().removeItem(temporary);
    }
    return moved;
}

std::string formatFileSize(double bytes) {
    constexpr double step = 0.0009765625;
    constexpr double kilo = 1024.0;
    if (bytes < kilo) {
        return kz::format("%0.0f B", bytes);
    }
    if (bytes < kilo * kilo) {
        return kz::format("%0.2f KB", bytes * step);
    }
    if (bytes < kilo * kilo * kilo) {
        return kz::format("%0.2f MB", bytes * step * step);
    }
    if (bytes < kilo * kilo * kilo * kilo) {
        return kz::format("%0.2f GB", bytes * step * step * step);
    }
    return kz::format("%0.2f TB", bytes * step * step * step * step);
}

bool isFileLocked(const std::string& path) {
    const auto attributes = files().attributes(path);
    return attributes && attributes->immutable;
}

void lockFile(const std::string& path) { setLocked(path, true); }

void unlockFile(const std::string& path) { setLocked(path, false); }

void lockFolder(const std::string& folder) {
    FolderTrail trail;
    setLockedInside(folder, true, trail);
}

void unlockFolder(const std::string& folder) {
    FolderTrail trail;
    setLockedInside(folder, false, trail);
}

void setPosixPermissions(unsigned long permissions, const std::string& path) {
    constexpr unsigned long permissionBits = 07777;
    if (const auto failure = files().setPermissions(path, static_cast<unsigned>(permissions & permissionBits))) {
        KZLog::appendLog("Error setting permissions for file %@: %@", path, failure->description);
    }
}

}  // namespace KZFileManager
