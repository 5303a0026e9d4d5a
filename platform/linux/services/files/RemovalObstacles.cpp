#include <fcntl.h>
#include <linux/stat.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "platform/linux/services/files/FolderListing.h"
#include "platform/linux/services/files/FolderTrail.h"
#include "platform/linux/services/files/ItemRemover.h"
#include "platform/posix/FileErrors.h"
#include "platform/posix/PathParts.h"

namespace platform::linux_host {

namespace {

// Looks through one folder, depth first, as the removal will.
class ObstacleSearch {
public:
    ObstacleSearch(posix::Descriptor folder, const std::string& path) : m_path(path), m_trail(std::move(folder)) {
        m_levels.emplace_back();
    }

    Failure run() {
        if (Failure found = lookAtEntries()) {
            return found;
        }
        while (m_levels.size() > 1 || !m_levels.back().folders.empty()) {
            if (m_levels.back().folders.empty()) {
                m_levels.pop_back();
                if (const int code = m_trail.leave(); code != 0) {
                    return obstacle({}, code);
                }
            } else if (Failure found = lookIntoFolder()) {
                return found;
            }
        }
        return {};
    }

private:
    struct Level {
        std::string name;
        std::vector<std::string> folders;  // still to be looked into
    };

    Failure lookIntoFolder() {
        Level level;
        level.name = std::move(m_levels.back().folders.back());
        m_levels.back().folders.pop_back();
        if (const int code = m_trail.enter(level.name); code != 0) {
            return obstacle(level.name, code);
        }
        m_levels.push_back(std::move(level));
        return lookAtEntries();
    }

    Failure lookAtEntries() {
        std::vector<DirectoryEntry> entries;
        if (const int code = listFolder(m_trail.current(), entries); code != 0) {
            return obstacle({}, code);
        }
        struct stat folder {};
        if (::fstat(m_trail.current(), &folder) != 0) {
            return obstacle({}, errno);
        }
        const bool own = ::geteuid() == 0 || folder.st_uid == ::geteuid();
        if (!entries.empty() && !own && ::faccessat(m_trail.current(), ".", W_OK | X_OK, AT_EACCESS) != 0) {
            return obstacle({}, errno);
        }
        for (DirectoryEntry& entry : entries) {
            if (Failure found = lookAt(entry)) {
                return found;
            }
        }
        return {};
    }

    Failure lookAt(DirectoryEntry& entry) {
        struct statx status {};
        if (::statx(m_trail.current(), entry.name.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE, &status) != 0) {
            return obstacle(entry.name, errno);
        }
        if ((status.stx_attributes & (STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND)) != 0) {
            return obstacle(entry.name, EPERM);
        }
        if (S_ISDIR(status.stx_mode)) {
            m_levels.back().folders.push_back(std::move(entry.name));
        }
        return {};
    }

    Failure obstacle(const std::string& name, int code) const {
        std::string path = m_path;
        for (std::size_t i = 1; i < m_levels.size(); ++i) {
            path = posix::joinPath(path, m_levels[i].name);
        }
        return posix::fileError("remove", name.empty() ? path : posix::joinPath(path, name), code);
    }

    std::string m_path;
    FolderTrail m_trail;
    std::vector<Level> m_levels;
};

}  // namespace

Failure findRemovalObstacle(const ItemPlace& item) {
    struct statx status {};
    if (::statx(item.folder, item.name.c_str(), AT_SYMLINK_NOFOLLOW, STATX_TYPE, &status) != 0) {
        return posix::fileError("remove", item.shown, errno);
    }
    if ((status.stx_attributes & (STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND)) != 0) {
        return posix::fileError("remove", item.shown, EPERM);
    }
    if (!S_ISDIR(status.stx_mode)) {
        return {};
    }
    posix::Descriptor folder(::openat(item.folder, item.name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    return folder ? ObstacleSearch(std::move(folder), item.shown).run() : posix::fileError("remove", item.shown, errno);
}

}  // namespace platform::linux_host
