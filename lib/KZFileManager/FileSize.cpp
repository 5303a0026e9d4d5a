#include <vector>

#include "lib/KZFileManager/FolderTrail.h"
#include "lib/KZFileManager/Queries.h"
#include "lib/base/PathText.h"
#include "platform/ports/Host.h"

namespace {

std::uint64_t ownSize(const std::string& path) {
    const auto attributes = platform::host().files->attributes(path);
    return attributes ? attributes->size : 0;
}

std::uint64_t folderSize(const std::string& folder, KZFileManager::FolderTrail& trail) {
    const KZFileManager::FolderTrail::Step step(trail, folder);
    if (step.isLoop()) {
        return 0;
    }
    const auto entries = platform::host().files->contentsOfDirectory(folder);
    if (!entries) {
        return 0;
    }
    std::uint64_t sum = 0;
    for (const auto& entry : *entries) {
        const std::string path = kz::appendPathComponent(folder, entry.name);
        sum += KZFileManager::isFolderEntry(entry, path) ? folderSize(path, trail) : ownSize(path);
    }
    return sum;
}

}  // namespace

namespace KZFileManager {

std::uint64_t fileSize(const std::string& path) {
    if (!isDirectoryAtPath(path)) {
        return ownSize(path);
    }
    FolderTrail trail;
    return folderSize(path, trail);
}

}  // namespace KZFileManager
