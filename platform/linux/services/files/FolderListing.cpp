#include "platform/linux/services/files/FolderListing.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cstddef>

#include "platform/posix/FileTypes.h"

namespace platform::linux_host {

namespace {

constexpr std::size_t bufferSize = std::size_t{32} * 1024;

// An entry that is gone by now counts nothing.
void measure(int folder, const char* name, VisitedEntry& entry) {
    struct statx status {};
    if (::statx(folder, name, AT_SYMLINK_NOFOLLOW, STATX_TYPE | STATX_SIZE, &status) != 0) {
        return;
    }
    if (entry.type == FileType::unknown) {
        entry.type = posix::typeOfMode(status.stx_mode);
    }
    entry.size = entry.type == FileType::folder ? 0 : status.stx_size;
}

}  // namespace

int visitFolder(int folder, VisitSizes sizes, const std::function<void(const VisitedEntry&)>& visit) {
    alignas(dirent64) std::array<char, bufferSize> buffer;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    for (;;) {
        const ssize_t filled = ::getdents64(folder, buffer.data(), buffer.size());
        if (filled < 0) {
            return errno;
        }
        if (filled == 0) {
            return 0;
        }
        for (ssize_t at = 0; at < filled;) {
            const auto* entry = reinterpret_cast<const dirent64*>(buffer.data() + at);
            at += entry->d_reclen;
            if (posix::isDotOrDotDot(entry->d_name)) {
                continue;
            }
            VisitedEntry visited{.name = entry->d_name, .type = posix::typeOfEntry(entry->d_type), .size = 0};
            if (sizes == VisitSizes::yes && visited.type != FileType::folder) {
                measure(folder, entry->d_name, visited);
            }
            visit(visited);
        }
    }
}

int listFolder(int folder, std::vector<DirectoryEntry>& entries) {
    return visitFolder(folder, VisitSizes::no, [&](const VisitedEntry& entry) {
        entries.push_back({.name = std::string(entry.name), .type = entry.type});
    });
}

}  // namespace platform::linux_host
