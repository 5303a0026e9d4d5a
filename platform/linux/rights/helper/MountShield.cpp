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
#include <cstdint>
#include <utility>

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

bool mountAt(int mount, int place) {
    return ::move_mount(mount, "", place, "", MOVE_MOUNT_F_EMPTY_PATH | MOVE_MOUNT_T_EMPTY_PATH) == 0;
}

bool setAttributes(int mount, std::uint64_t set) {
    mount_attr attributes{};
    attributes.attr_set = set;
    return ::mount_setattr(mount, "", AT_EMPTY_PATH | AT_RECURSIVE, &attributes, sizeof attributes) == 0;
}

int makeEmptyFolder() {
    const int system = ::fsopen("tmpfs", FSOPEN_CLOEXEC);
    return system >= 0 && ::fsconfig(system, FSCONFIG_CMD_CREATE, nullptr, nullptr, 0) == 0
               ? ::fsmount(system, FSMOUNT_CLOEXEC, 0)
               : -1;
}

}  // namespace

std::optional<MountShield::Folder> MountShield::folderOf(int descriptor) {
    std::array<char, PATH_MAX> path;  // NOLINT(cppcoreguidelines-pro-type-member-init): filled below
    const auto link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
    if (length <= 0 || path[0] != '/') {
        return std::nullopt;
    }
    return Folder{descriptor, std::string(path.data(), static_cast<std::size_t>(length))};
}

std::optional<MountShield> MountShield::around(const std::vector<int>& folders) {
    MountShield shield;
    for (const int descriptor : folders) {
        auto folder = folderOf(descriptor);
        if (!folder || shield.m_folders.size() == mostFolders) {
            return std::nullopt;
        }
        shield.m_folders.push_back(std::move(*folder));
    }
    return shield;
}

bool MountShield::isolateLast(posix::Descriptor foreign, const std::vector<std::string>& names) {
    m_heldForeign = std::move(foreign);
    m_foreign = folderOf(m_heldForeign.get());
    std::string way;
    for (const auto& name : names) {
        if (name == "..") {
            return false;
        }
        if (name != ".") {
            way += way.empty() ? name : "/" + name;
            m_way.push_back(way);
        }
    }
    return m_foreign && !m_folders.empty();
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
        if (m_foreign && i + 1 == m_folders.size()) {
            return mountIsolated(kept[i]);
        }
        const int place = reopened(m_folders[i].descriptor, m_folders[i].path.c_str());
        if (place < 0 || !mountAt(kept[i], place)) {
            return errno;
        }
    }
    return 0;
}

int MountShield::mountIsolated(int kept) const noexcept {
    const int place = reopened(m_foreign->descriptor, m_foreign->path.c_str());
    if (place < 0 || !setAttributes(kept, MOUNT_ATTR_NOSYMFOLLOW)) {
        return errno;
    }
    if (m_way.empty()) {
        return mountAt(kept, place) ? 0 : errno;
    }
    const int nothing = makeEmptyFolder();
    for (const auto& folder : m_way) {
        if (nothing < 0 || ::mkdirat(nothing, folder.c_str(), S_IRWXU) != 0) {
            return errno;
        }
    }
    const int end = ::openat(nothing, m_way.back().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
    const bool isDone =
        end >= 0 && setAttributes(nothing, MOUNT_ATTR_RDONLY) && mountAt(nothing, place) && mountAt(kept, end);
    return isDone ? 0 : errno;
}

}  // namespace platform::rights
