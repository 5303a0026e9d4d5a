#include "platform/linux/services/files/ImmutableFlag.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <linux/stat.h>
#include <sys/ioctl.h>
#include <sys/stat.h>

#include <cerrno>

#include "platform/posix/Descriptor.h"
#include "platform/posix/FileErrors.h"

namespace platform::linux_host {

Failure setImmutableFlag(const std::string& path, bool immutable) {
    const char* doing = immutable ? "lock" : "unlock";
    if (Failure refused = posix::refusedPath(doing, path)) {
        return refused;
    }
    struct statx status {};
    if (::statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE, &status) != 0) {
        return posix::fileError(doing, path, errno);
    }
    const bool present = (status.stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
    if (present == immutable) {
        return {};
    }
    if (!S_ISREG(status.stx_mode) && !S_ISDIR(status.stx_mode)) {
        return posix::fileError(doing, path, EOPNOTSUPP);
    }
    const posix::Descriptor item(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC));
    int flags = 0;
    if (!item || ::ioctl(item.get(), FS_IOC_GETFLAGS, &flags) != 0) {
        return posix::fileError(doing, path, errno == ENOTTY ? EOPNOTSUPP : errno);
    }
    flags = immutable ? flags | FS_IMMUTABLE_FL : flags & ~FS_IMMUTABLE_FL;
    if (::ioctl(item.get(), FS_IOC_SETFLAGS, &flags) != 0) {
        return posix::fileError(doing, path, errno);
    }
    return {};
}

}  // namespace platform::linux_host
