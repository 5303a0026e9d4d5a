#include "platform/linux/services/FolderListing.h"

#include <dirent.h>

#include <array>
#include <cerrno>
#include <cstddef>

namespace platform::linux_host {

namespace {

FileType typeOf(unsigned char hint) {
    switch (hint) {
        case DT_REG:
            return FileType::regular;
        case DT_DIR:
            return FileType::folder;
        case DT_LNK:
            return FileType::symbolicLink;
        case DT_UNKNOWN:
            return FileType::unknown;
        default:
            return FileType::other;
    }
}

bool isDotOrDotDot(const char* name) {
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

}  // namespace

int listFolder(int folder, std::vector<DirectoryEntry>& entries) {
    alignas(dirent64) std::array<char, 32 * 1024> buffer;  // NOLINT(cppcoreguidelines-pro-type-member-init)
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
            if (!isDotOrDotDot(entry->d_name)) {
                entries.push_back({entry->d_name, typeOf(entry->d_type)});
            }
            at += entry->d_reclen;
        }
    }
}

}  // namespace platform::linux_host
