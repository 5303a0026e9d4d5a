#include "platform/macos/services/files/OpenFileAttributes.h"

#include <copyfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

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
    if (::fcopyfile(from, to, nullptr, COPYFILE_METADATA) == 0) {
        return 0;
    }
    return errno == ENOTSUP ? 0 : errno;  // what the file system cannot hold is left out
}

}  // namespace platform::macos
