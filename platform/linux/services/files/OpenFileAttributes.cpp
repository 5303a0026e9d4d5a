#include "platform/linux/services/files/OpenFileAttributes.h"

#include <linux/limits.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>
#include <vector>

#include "platform/linux/services/files/ItemMetadata.h"

namespace platform::linux_host {

namespace {

// Removes the users' attributes of `to` that `from` does not have; what cannot be removed stays.
void dropAttributesMissingIn(int from, int to) {
    if (::flistxattr(to, nullptr, 0) <= 0) {
        return;
    }
    std::vector<char> list(XATTR_LIST_MAX);
    const ssize_t size = ::flistxattr(to, list.data(), list.size());
    std::string_view names(list.data(), size < 0 ? 0 : static_cast<std::size_t>(size));
    while (!names.empty()) {
        const std::string_view name(names.data());  // each ends with a NUL
        if (name.starts_with("user.") && ::fgetxattr(from, name.data(), nullptr, 0) < 0 && errno == ENODATA) {
            (void)::fremovexattr(to, name.data());
        }
        names.remove_prefix(name.size() + 1);
    }
}

}  // namespace

int copyAttributes(int from, int to) {
    struct stat source {};
    struct stat copy {};
    if (::fstat(from, &source) != 0 || ::fstat(to, &copy) != 0) {
        return errno;
    }
    const uid_t user = ::geteuid();
    if (user != 0 && user != copy.st_uid) {
        return EPERM;
    }
    dropAttributesMissingIn(from, to);
    return copyMetadata(from, source, to, Inheritance::possible);
}

}  // namespace platform::linux_host
