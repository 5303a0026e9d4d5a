#include "platform/linux/services/files/OpenFileAttributes.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/services/files/ItemMetadata.h"

namespace platform::linux_host {

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
    return copyMetadata(from, source, to, Inheritance::possible);
}

}  // namespace platform::linux_host
