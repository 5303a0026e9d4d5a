#include "lib/KZFileManager/BulkMutations.h"

#include <utility>

#include "lib/KZFileManager/FolderTrail.h"
#include "lib/KZFileManager/Queries.h"
#include "lib/KZFileManager/Recycling.h"
#include "lib/KZLog.h"
#include "lib/KZTaskEx.h"
#include "lib/base/PathText.h"
#include "lib/base/Text.h"
#include "lib/base/ToolArgument.h"
#include "platform/ports/Host.h"

namespace {

using KZFileManager::FolderTrail;

constexpr const char* archiver = "/usr/bin/ditto";

std::vector<platform::DirectoryEntry> entriesOf(const std::string& folder) {
    return platform::host().files->contentsOfDirectory(folder).value_or(std::vector<platform::DirectoryEntry>{});
}

// Trashes the files below the folder whose name the predicate accepts and adds their paths.
template <typename Matches>
void trashMatching(const Matches& matches, const std::string& folder, FolderTrail& trail,
                   std::vector<std::string>& trashed) {
    const FolderTrail::Step step(trail, folder);
    if (step.isLoop()) {
        return;
    }
    for (const auto& entry : entriesOf(folder)) {
        std::string path = kz::appendPathComponent(folder, entry.name);
        if (KZFileManager::isFolderEntry(entry, path)) {
            trashMatching(matches, path, trail, trashed);
        } else if (matches(entry.name)) {
            KZFileManager::trashFile(path);
            trashed.push_back(std::move(path));
        }
    }
}

bool isFinderClutter(const std::string& name) { return name == ".DS_Store" || name == "Icon\r"; }

// A link that leads back to a folder on the trail is something that lies there, not emptiness.
bool isEmptyBelow(const std::string& folder, FolderTrail& trail) {
    const FolderTrail::Step step(trail, folder);
    if (step.isLoop()) {
        return false;
    }
    for (const auto& entry : entriesOf(folder)) {
        if (isFinderClutter(entry.name)) {
            continue;
        }
        const std::string path = kz::appendPathComponent(folder, entry.name);
        if (!KZFileManager::isFolderEntry(entry, path) || !isEmptyBelow(path, trail)) {
            return false;
        }
    }
    return true;
}

}  // namespace

namespace KZFileManager {

bool trashDirectoryContents(const std::string& folder) { return trashDirectoryContents(folder, ShouldAuth::yes); }

bool trashDirectoryContents(const std::string& folder, ShouldAuth shouldAuth) {
    bool all = true;
    for (const auto& entry : entriesOf(folder)) {
        all = trashFile(kz::appendPathComponent(folder, entry.name), shouldAuth) && all;
    }
    return all;
}

bool copyContentsOfDirectory(const std::string& folder, const std::string& toPath, std::chrono::seconds timeout) {
    for (const auto& entry : entriesOf(folder)) {
        KZLog::fastAppendLog("File: %@", entry.name);
        if (!copyFile(kz::appendPathComponent(folder, entry.name), kz::appendPathComponent(toPath, entry.name),
                      timeout)) {
            return false;
        }
    }
    return true;
}

std::vector<std::string> trashFilesOfType(const std::string& extension, const std::string& inFolder) {
    const std::string wanted = kz::lowercased(extension);
    const auto hasExtension = [&](const std::string& name) {
        return kz::lowercased(kz::pathExtension(name)) == wanted;
    };
    std::vector<std::string> trashed;
    FolderTrail trail;
    trashMatching(hasExtension, inFolder, trail, trashed);
    return trashed;
}

std::vector<std::string> trashFilesNamed(const std::string& name, const std::string& inFolder) {
    std::vector<std::string> trashed;
    FolderTrail trail;
    trashMatching([&](const std::string& candidate) { return candidate == name; }, inFolder, trail, trashed);
    return trashed;
}

bool isFolderEmpty(const std::string& folder) {
    FolderTrail trail;
    return isEmptyBelow(folder, trail);
}

bool removeFolderIfEmpty(const std::string& folder) { return isFolderEmpty(folder) && removeFile(folder); }

std::string createDirectoryStructure(const std::string& path, const std::string& destination) {
    const bool isPlainFolder = isDirectoryAtPath(path) && !isPackageAtPath(path);
    std::string made = kz::appendPathComponent(destination, isPlainFolder ? path : kz::deletingLastPathComponent(path));
    if (!fileExistsAtPath(made)) {
        createDirectory(made);
    }
    return made;
}

bool compressFile(const std::string& source, const std::string& toDestinationFile) {
    return compressFile(source, toDestinationFile, IncludeParent::yes);
}

bool compressFile(const std::string& source, const std::string& toDestinationFile, IncludeParent includeParent) {
    if (fileExistsAtPath(toDestinationFile)) {
        trashFile(toDestinationFile);
    }
    KZTaskEx::Arguments arguments{"-ck"};
    if (includeParent == IncludeParent::yes) {
        arguments.emplace_back("--keepParent");
    }
    arguments.push_back(kz::toolArgument(source));
    arguments.push_back(kz::toolArgument(toDestinationFile));
    KZTaskEx::runTask(archiver, arguments);
    return fileExistsAtPath(toDestinationFile);
}

bool decompressFile(const std::string& archive, const std::string& toDestinationFolder) {
    if (fileExistsAtPath(toDestinationFolder)) {
        recycle(toDestinationFolder);
    }
    KZTaskEx::runTask(archiver, {"-xk", kz::toolArgument(archive), kz::toolArgument(toDestinationFolder)});
    return fileExistsAtPath(toDestinationFolder);
}

}  // namespace KZFileManager
