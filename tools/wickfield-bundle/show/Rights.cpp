#include "tools/wickfield-bundle/show/Rights.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace wickfield_bundle {

Right rightToChange(const std::string& path) {
    if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0) {
        return Right::granted;
    }
    return errno == EROFS ? Right::readOnly : errno == EPERM ? Right::locked : Right::administrators;
}

Right rightToRead(const std::string& path) {
    const bool granted = ::faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) == 0 || errno == ENAMETOOLONG;
    return granted ? Right::granted : Right::administrators;
}

bool mayLeave(const std::string& path, const std::string& folder) {
    struct stat item {};
    struct stat above {};
    if (::geteuid() == 0 || ::lstat(path.c_str(), &item) != 0 || ::stat(folder.c_str(), &above) != 0) {
        return true;
    }
    const bool isSticky = (above.st_mode & S_ISVTX) != 0;
    if (isSticky && item.st_uid != ::geteuid() && above.st_uid != ::geteuid()) {
        return false;
    }
    // Its entry ".." has to change.
    return !S_ISDIR(item.st_mode) || rightToChange(path) == Right::granted;
}

}  // namespace wickfield_bundle
