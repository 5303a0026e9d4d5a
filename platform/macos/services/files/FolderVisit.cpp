#include "platform/macos/services/files/FolderVisit.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <memory>
#include <string_view>

namespace platform::macos {

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { (void)::closedir(folder); }
};

FileType typeOfEntry(unsigned char type) {
    switch (type) {
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

VisitedEntry described(DIR* folder, const dirent& found, VisitSizes sizes) {
    VisitedEntry entry{.name = found.d_name, .type = typeOfEntry(found.d_type), .size = 0};
    const bool wantsSize = sizes == VisitSizes::yes && entry.type != FileType::folder;
    struct stat status {};
    if ((wantsSize || entry.type == FileType::unknown) &&
        ::fstatat(::dirfd(folder), found.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
        entry.type = typeOfMode(status.st_mode);
        entry.size = wantsSize && entry.type != FileType::folder ? static_cast<std::uint64_t>(status.st_size) : 0;
    }
    return entry;
}

}  // namespace

FileType typeOfMode(unsigned mode) {
    switch (mode & S_IFMT) {
        case S_IFREG:
            return FileType::regular;
        case S_IFDIR:
            return FileType::folder;
        case S_IFLNK:
            return FileType::symbolicLink;
        default:
            return FileType::other;
    }
}

bool visitFolder(const std::string& path, VisitSizes sizes, const std::function<void(const VisitedEntry&)>& visit) {
    if (path.find('\0') != std::string::npos) {
        return false;
    }
    const std::unique_ptr<DIR, CloseFolder> folder(::opendir(path.c_str()));
    if (!folder) {
        return false;
    }
    for (;;) {
        errno = 0;
        const dirent* const found = ::readdir(folder.get());
        if (found == nullptr) {
            return errno == 0;
        }
        const std::string_view name = found->d_name;
        if (name != "." && name != "..") {
            visit(described(folder.get(), *found, sizes));
        }
    }
}

}  // namespace platform::macos
