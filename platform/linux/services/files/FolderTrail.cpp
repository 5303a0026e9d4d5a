#include "platform/linux/services/files/FolderTrail.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

namespace platform::linux_host {

namespace {
constexpr std::size_t openLevels = 32;
}  // namespace

FolderTrail::FolderTrail(posix::Descriptor start) {
    m_levels.emplace_back();
    m_levels.back().folder = std::move(start);
}

int FolderTrail::enter(const std::string& name) {
    posix::Descriptor folder(::openat(current(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder) {
        return errno;
    }
    if (const int code = closeFarFolder(); code != 0) {
        return code;
    }
    m_levels.emplace_back();
    m_levels.back().folder = std::move(folder);
    return 0;
}

int FolderTrail::closeFarFolder() {
    if (m_levels.size() < openLevels) {
        return 0;
    }
    Level& far = m_levels[m_levels.size() - openLevels];
    if (!far.folder) {
        return 0;  // closed on an earlier visit to this depth
    }
    struct stat status {};
    if (::fstat(far.folder.get(), &status) != 0) {
        return errno;
    }
    far.device = status.st_dev;
    far.inode = status.st_ino;
    far.folder.reset();
    return 0;
}

int FolderTrail::leave() {
    const posix::Descriptor below = std::move(m_levels.back().folder);
    m_levels.pop_back();
    Level& level = m_levels.back();
    if (level.folder) {
        return 0;
    }
    level.folder.reset(::openat(below.get(), "..", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    struct stat status {};
    if (!level.folder || ::fstat(level.folder.get(), &status) != 0) {
        return errno;
    }
    return status.st_dev == level.device && status.st_ino == level.inode ? 0 : ESTALE;
}

}  // namespace platform::linux_host
