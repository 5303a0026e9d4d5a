#include "platform/linux/services/files/Staging.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/posix/PathParts.h"
#include "platform/posix/StagedName.h"

namespace platform::linux_host {

ItemPlace stagedSibling(const ItemPlace& place) {
    const std::string staged = posix::stagedName();
    return {.folder = place.folder,
            .name = posix::joinPath(posix::splitPath(place.name).folder, staged),
            .shown = posix::joinPath(posix::splitPath(place.shown).folder, staged)};
}

int renameWithoutReplacing(const ItemPlace& from, const ItemPlace& to) {
    if (::renameat2(from.folder, from.name.c_str(), to.folder, to.name.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    return errno == EINVAL || errno == ENOSYS ? renameInTwoSteps(from, to) : errno;
}

int renameInTwoSteps(const ItemPlace& from, const ItemPlace& to) {
    struct stat status {};
    if (::fstatat(from.folder, from.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno;
    }
    if (!S_ISDIR(status.st_mode)) {
        if (::linkat(from.folder, from.name.c_str(), to.folder, to.name.c_str(), 0) == 0) {
            if (::unlinkat(from.folder, from.name.c_str(), 0) == 0) {
                return 0;
            }
            const int code = errno;
            (void)::unlinkat(to.folder, to.name.c_str(), 0);
            return code;
        }
        if (errno == EEXIST) {
            return errno;
        }
    }
    struct stat standing {};
    if (::fstatat(to.folder, to.name.c_str(), &standing, AT_SYMLINK_NOFOLLOW) == 0) {
        return EEXIST;
    }
    return ::renameat(from.folder, from.name.c_str(), to.folder, to.name.c_str()) == 0 ? 0 : errno;
}

}  // namespace platform::linux_host
