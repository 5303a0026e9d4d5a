#include "platform/linux/services/files/Ownership.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>
#include <vector>

#include "platform/linux/services/files/FolderListing.h"
#include "platform/linux/services/files/FolderTrail.h"

namespace platform::linux_host {

namespace {

// The open folder itself, whatever stands at its name by now; the names of those in it.
std::vector<std::string> giveFolder(int folder, const Owner& owner) {
    struct stat status {};
    if (::fstat(folder, &status) == 0 && status.st_uid == 0) {
        (void)::fchown(folder, owner.user, owner.group);
    }
    std::vector<std::string> folders;
    (void)visitFolder(folder, VisitSizes::no, [&](const VisitedEntry& entry) {
        if (entry.type == FileType::folder || entry.type == FileType::unknown) {
            folders.emplace_back(entry.name);
        }
    });
    return folders;
}

}  // namespace

void giveFolders(int folder, const std::string& name, const Owner& owner) {
    FolderTrail trail(posix::Descriptor(::fcntl(folder, F_DUPFD_CLOEXEC, 0)));
    std::vector<std::vector<std::string>> levels{{name}};
    while (!levels.empty()) {
        if (levels.back().empty()) {
            levels.pop_back();
            if (!levels.empty() && trail.leave() != 0) {
                return;
            }
            continue;
        }
        const std::string next = std::move(levels.back().back());
        levels.back().pop_back();
        if (trail.enter(next) == 0) {
            levels.push_back(giveFolder(trail.current(), owner));
        }
    }
}

}  // namespace platform::linux_host
