#include "platform/linux/services/files/ItemMetadata.h"

#include <fcntl.h>
#include <linux/limits.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <vector>

namespace platform::linux_host {

namespace {

constexpr std::string_view accessList = "system.posix_acl_access";
constexpr std::string_view defaultAccessList = "system.posix_acl_default";
constexpr std::string_view capabilities = "security.capability";

// The copy belongs to the caller, so that a refusal speaks of the file system, not of rights.
bool isMatterOfSupport(int code) { return code == EOPNOTSUPP || code == ENOSYS || code == EPERM; }

int unlessUnsupported(int result) { return result == 0 || isMatterOfSupport(errno) ? 0 : errno; }

bool isCopied(std::string_view name) {
    return name.starts_with("user.") || name == accessList || name == defaultAccessList ||
           (name == capabilities && ::geteuid() == 0);
}

int copyAttribute(int from, int to, const char* name) {
    std::array<char, 1024> small;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    ssize_t size = ::fgetxattr(from, name, small.data(), small.size());
    if (size >= 0) {
        return unlessUnsupported(::fsetxattr(to, name, small.data(), static_cast<std::size_t>(size), 0));
    }
    if (errno == ERANGE) {
        std::vector<char> large(XATTR_SIZE_MAX);
        size = ::fgetxattr(from, name, large.data(), large.size());
        if (size >= 0) {
            return unlessUnsupported(::fsetxattr(to, name, large.data(), static_cast<std::size_t>(size), 0));
        }
    }
    return errno == ENODATA || isMatterOfSupport(errno) ? 0 : errno;
}

int copyListed(int from, int to, std::string_view names, bool& hasAccessList) {
    while (!names.empty()) {
        const std::string_view name(names.data());  // each ends with a NUL
        if (isCopied(name)) {
            hasAccessList = hasAccessList || name == accessList;
            if (const int code = copyAttribute(from, to, name.data()); code != 0) {
                return code;
            }
        }
        names.remove_prefix(name.size() + 1);
    }
    return 0;
}

int copyAttributes(int from, int to, bool& hasAccessList) {
    std::array<char, 1024> small;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    ssize_t size = ::flistxattr(from, small.data(), small.size());
    if (size >= 0) {
        return copyListed(from, to, {small.data(), static_cast<std::size_t>(size)}, hasAccessList);
    }
    if (errno == ERANGE) {
        std::vector<char> large(XATTR_LIST_MAX);
        size = ::flistxattr(from, large.data(), large.size());
        if (size >= 0) {
            return copyListed(from, to, {large.data(), static_cast<std::size_t>(size)}, hasAccessList);
        }
    }
    return isMatterOfSupport(errno) ? 0 : errno;
}

int dropAttribute(int item, std::string_view name) {
    if (::fgetxattr(item, name.data(), nullptr, 0) < 0) {
        return 0;
    }
    return unlessUnsupported(::fremovexattr(item, name.data()));
}

// The new owner where there is the right to give the item to him, otherwise the group alone where there is that.
int copyOwner(const struct stat& source, int to, struct stat& copy) {
    if (source.st_uid == copy.st_uid && source.st_gid == copy.st_gid) {
        return 0;
    }
    if (::fchown(to, source.st_uid, source.st_gid) == 0) {
        copy.st_uid = source.st_uid;
        copy.st_gid = source.st_gid;
        return 0;
    }
    if (!isMatterOfSupport(errno) && errno != EINVAL) {
        return errno;
    }
    if (source.st_gid != copy.st_gid && ::fchown(to, static_cast<uid_t>(-1), source.st_gid) == 0) {
        copy.st_gid = source.st_gid;
    }
    return 0;
}

mode_t modeFor(const struct stat& source, const struct stat& copy) {
    mode_t mode = source.st_mode & 07777U;
    if (source.st_uid != copy.st_uid) {
        mode &= ~static_cast<mode_t>(S_ISUID);
    }
    if (source.st_gid != copy.st_gid) {
        mode &= ~static_cast<mode_t>(S_ISGID);
    }
    return mode;
}

}  // namespace

int copyMetadata(int from, const struct stat& source, int to, Inheritance inheritance) {
    struct stat copy {};
    if (::fstat(to, &copy) != 0) {
        return errno;
    }
    if (const int code = copyOwner(source, to, copy); code != 0) {
        return code;
    }
    bool hasAccessList = false;
    if (inheritance == Inheritance::possible && S_ISDIR(source.st_mode)) {
        if (const int code = dropAttribute(to, defaultAccessList); code != 0) {
            return code;
        }
    }
    if (const int code = copyAttributes(from, to, hasAccessList); code != 0) {
        return code;
    }
    if (inheritance == Inheritance::possible && !hasAccessList) {
        if (const int code = dropAttribute(to, accessList); code != 0) {
            return code;
        }
    }
    if (const int code = unlessUnsupported(::fchmod(to, modeFor(source, copy))); code != 0) {
        return code;
    }
    const std::array<timespec, 2> times{source.st_atim, source.st_mtim};
    return unlessUnsupported(::futimens(to, times.data()));
}

int copyLinkMetadata(const struct stat& source, int folder, const char* name) {
    if (::fchownat(folder, name, source.st_uid, source.st_gid, AT_SYMLINK_NOFOLLOW) != 0 && !isMatterOfSupport(errno) &&
        errno != EINVAL) {
        return errno;
    }
    const std::array<timespec, 2> times{source.st_atim, source.st_mtim};
    return unlessUnsupported(::utimensat(folder, name, times.data(), AT_SYMLINK_NOFOLLOW));
}

}  // namespace platform::linux_host
