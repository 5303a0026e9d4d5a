#include "platform/linux/services/files/Ownership.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>
#include <vector>

#include "platform/linux/services/files/FolderListing.h"
#include "platform/linux/services/files/FolderTrail.h"
#include "platform/linux/services/files/PathParts.h"

namespace platform::linux_host {

namespace {

// True when the item is a folder, whose contents are still to be given away.
bool giveItem(int folder, const std::string& name, const Owner& owner) {
    struct stat status {};
    if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return false;
    }
    const bool isFolder = S_ISDIR(status.st_mode);
    if (isFolder || status.st_nlink == 1) {
        (void)::fchownat(folder, name.c_str(), owner.user, owner.group, AT_SYMLINK_NOFOLLOW);
    }
    return isFolder;
}

std::vector<std::string> giveEntries(int folder, const Owner& owner) {
    std::vector<DirectoryEntry> entries;
    std::vector<std::string> folders;
    (void)listFolder(folder, entries);
    for (DirectoryEntry& entry : entries) {
        if (giveItem(folder, entry.name, owner)) {
            folders.push_back(std::move(entry.name));
        }
    }
    return folders;
}

}  // namespace

void giveTree(const std::string& path, const Owner& owner) {
    const PathParts parts = splitPath(path);
    posix::Descriptor parent(::open(parts.folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!parent || !giveItem(parent.get(), parts.name, owner)) {
        return;
    }
    FolderTrail trail(std::move(parent));
    std::vector<std::vector<std::string>> levels{{parts.name}};
    while (!levels.empty()) {
        if (levels.back().empty()) {
            levels.pop_back();
            if (!levels.empty() && trail.leave() != 0) {
                return;
            }
            continue;
        }
        const std::string name = std::move(levels.back().back());
        levels.back().pop_back();
        if (trail.enter(name) == 0) {
            levels.push_back(giveEntries(trail.current(), owner));
        }
    }
}

}  // namespace platform::linux_host
