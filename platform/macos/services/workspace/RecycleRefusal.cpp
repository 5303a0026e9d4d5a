#include "platform/macos/services/workspace/RecycleRefusal.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace platform::macos {

namespace {

// In such a folder everybody takes away what is theirs.
bool belongsToOthers(const struct stat& item, const struct stat& folder) {
    const uid_t user = ::getuid();
    return (folder.st_mode & S_ISVTX) != 0 && user != 0 && item.st_uid != user && folder.st_uid != user;
}

}  // namespace

int recycleRefusal(const std::string& folder, const std::string& name, const std::string& trashFolder) {
    struct stat item {};
    struct stat place {};
    if (::lstat((folder + "/" + name).c_str(), &item) != 0 || ::stat(folder.c_str(), &place) != 0 ||
        ::access(folder.c_str(), W_OK | X_OK) != 0) {
        return errno;
    }
    if (belongsToOthers(item, place)) {
        return EACCES;
    }
    struct stat trash {};
    const bool known = ::stat(trashFolder.c_str(), &trash) == 0;
    if (known && trash.st_dev != item.st_dev) {
        return EIO;  // what is wrong with the Trash of another volume cannot be seen
    }
    return ::access(trashFolder.c_str(), W_OK | X_OK) != 0 ? errno : EIO;
}

}  // namespace platform::macos
