#include "platform/linux/rights/helper/MountShield.h"

#include <fcntl.h>
#include <limits.h>
#include <linux/openat2.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace platform::rights {

namespace {

constexpr std::size_t mostFolders = 2;

// The same folder, as it is reached in the view that the calling process has now.
int reopened(int folder, const char* path) {
    open_how how{};
    how.flags = O_PATH | O_DIRECTORY | O_CLOEXEC;
    how.resolve = RESOLVE_NO_SYMLINKS;
    const int again = static_cast<int>(::syscall(SYS_openat2, AT_FDCWD, path, &how, sizeof how));
    struct stat meant {};
    struct stat found {};
    if (again < 0 || ::fstat(folder, &meant) != 0 || ::fstat(again, &found) != 0) {
        return -1;
    }
    if (meant.st_dev != found.st_dev || meant.st_ino != found.st_ino) {
        errno = EACCES;
        return -1;
    }
    return again;
}

bool makeAllReadOnly() {
    mount_attr readOnly{};
    readOnly.attr_set = MOUNT_ATTR_RDONLY;
    return ::unshare(CLONE_NEWNS) == 0 && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount_setattr(AT_FDCWD, "/", AT_RECURSIVE, &readOnly, sizeof readOnly) == 0;
}

}  // namespace

std::optional<MountShield> MountShield::around(const std::vector<int>& folders) {
    MountShield shield;
    for (const int folder : folders) {
        std::array<char, PATH_MAX> path;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled below
        const auto link = "/proc/self/fd/" + std::to_string(folder);
        const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
        if (length <= 0 || path[0] != '/' || shield.m_folders.size() == mostFolders) {
            return std::nullopt;
        }
        shield.m_folders.push_back({folder, std::string(path.data(), static_cast<std::size_t>(length))});
    }
    return shield;
}

// The descriptors that are opened here close when the tool takes over.
int MountShield::raise() const noexcept {
    std::array<int, mostFolders> kept{-1, -1};
    for (std::size_t i = 0; i < m_folders.size(); ++i) {
        kept[i] =
            ::open_tree(m_folders[i].descriptor, "",
                        AT_EMPTY_PATH | OPEN_TREE_CLONE | static_cast<unsigned>(AT_RECURSIVE) | OPEN_TREE_CLOEXEC);
        if (kept[i] < 0) {
            return errno;
        }
    }
    if (!makeAllReadOnly()) {
        return errno;
    }
    for (std::size_t i = 0; i < m_folders.size(); ++i) {
        const int place = reopened(m_folders[i].descriptor, m_folders[i].path.c_str());
        if (place < 0 || ::move_mount(kept[i], "", place, "", MOVE_MOUNT_F_EMPTY_PATH | MOVE_MOUNT_T_EMPTY_PATH) != 0) {
            return errno;
        }
    }
    return 0;
}

}  // namespace platform::rights
