#include "platform/macos/services/files/FolderVisit.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <memory>

#include "platform/posix/FileTypes.h"
#include "platform/posix/PathParts.h"

namespace platform::macos {

namespace {

struct CloseFolder {
    void operator()(DIR* folder) const { (void)::closedir(folder); }
};

VisitedEntry described(DIR* folder, const dirent& found, VisitSizes sizes) {
    VisitedEntry entry{.name = found.d_name, .type = posix::typeOfEntry(found.d_type), .size = 0};
    const bool wantsSize = sizes == VisitSizes::yes && entry.type != FileType::folder;
    struct stat status {};
    if ((wantsSize || entry.type == FileType::unknown) &&
        ::fstatat(::dirfd(folder), found.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
        entry.type = posix::typeOfMode(status.st_mode);
        entry.size = wantsSize && entry.type != FileType::folder ? static_cast<std::uint64_t>(status.st_size) : 0;
    }
    return entry;
}

}  // namespace

bool visitFolder(const std::string& path, VisitSizes sizes, const std::function<void(const VisitedEntry&)>& visit) {
    const std::unique_ptr<DIR, CloseFolder> folder(::opendir(posix::systemPath(path)));
    if (!folder) {
        return false;
    }
    for (;;) {
        errno = 0;
        const dirent* const found = ::readdir(folder.get());
        if (found == nullptr) {
            return errno == 0;
        }
        if (!posix::isDotOrDotDot(found->d_name)) {
            visit(described(folder.get(), *found, sizes));
        }
    }
}

}  // namespace platform::macos
