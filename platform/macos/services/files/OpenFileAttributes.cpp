#include "platform/macos/services/files/OpenFileAttributes.h"

#include <copyfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <initializer_list>

namespace platform::macos {

int copyAttributes(int from, int to) {
    struct stat copy {};
    if (::fstat(to, &copy) != 0) {
        return errno;
    }
    const uid_t user = ::geteuid();
    if (user != 0 && user != copy.st_uid) {
        return EPERM;
    }
    // One after the other: a failure of the first kind would keep the others from being copied.
    for (const copyfile_flags_t kind : {COPYFILE_XATTR, COPYFILE_SECURITY}) {
        if (::fcopyfile(from, to, nullptr, kind) != 0 && errno != ENOTSUP) {
            return errno;  // what the file system cannot hold is left out
        }
    }
    return 0;
}

}  // namespace platform::macos
