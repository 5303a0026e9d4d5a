#include "platform/linux/services/files/ItemRemover.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "platform/linux/services/files/FolderListing.h"
#include "platform/linux/services/files/FolderTrail.h"
#include "platform/posix/FileErrors.h"
#include "platform/posix/PathParts.h"

namespace platform::linux_host {

namespace {

// Empties one folder, depth first.
class FolderEmptier {
public:
    FolderEmptier(posix::Descriptor folder, const std::string& path, Removal removal)
        : m_path(path), m_removal(removal), m_trail(std::move(folder)) {
        m_levels.emplace_back();
    }

    Failure run() {
        if (Failure failed = unlinkFiles()) {
            return failed;
        }
        while (m_levels.size() > 1 || !m_levels.back().folders.empty()) {
            if (Failure failed = m_levels.back().folders.empty() ? finishFolder() : startFolder()) {
                return failed;
            }
        }
        return {};
    }

private:
    struct Level {
        std::string name;
        std::vector<std::string> folders;  // still to be removed
    };

    Failure startFolder() {
        Level& level = m_levels.back();
        std::string name = std::move(level.folders.back());
        level.folders.pop_back();
        if (::unlinkat(m_trail.current(), name.c_str(), AT_REMOVEDIR) == 0 || errno == ENOENT) {
            return {};
        }
        if (errno != ENOTEMPTY && errno != EEXIST) {
            return failure(name, errno);
        }
        int code = m_trail.enter(name);
        if (code == EACCES && m_removal == Removal::openingFolders &&
            ::fchmodat(m_trail.current(), name.c_str(), S_IRWXU, 0) == 0) {
            code = m_trail.enter(name);
        }
        if (code != 0) {
            return failure(name, code);
        }
        m_levels.push_back({std::move(name), {}});
        return unlinkFiles();
    }

    Failure finishFolder() {
        const std::string name = std::move(m_levels.back().name);
        m_levels.pop_back();
        if (const int code = m_trail.leave(); code != 0) {
            return failure(name, code);
        }
        if (::unlinkat(m_trail.current(), name.c_str(), AT_REMOVEDIR) != 0 && errno != ENOENT) {
            return failure(name, errno);
        }
        return {};
    }

    Failure unlinkFiles() {
        if (m_removal == Removal::openingFolders) {
            struct stat status {};
            if (::fstat(m_trail.current(), &status) == 0 && (status.st_mode & S_IRWXU) != S_IRWXU) {
                // When it is refused, so is the removal below, which reports it.
                (void)::fchmod(m_trail.current(), (status.st_mode & 07777U) | S_IRWXU);
            }
        }
        std::vector<DirectoryEntry> entries;
        if (const int code = listFolder(m_trail.current(), entries); code != 0) {
            return failure({}, code);
        }
        for (DirectoryEntry& entry : entries) {
            if (entry.type == FileType::folder) {
                m_levels.back().folders.push_back(std::move(entry.name));
            } else if (::unlinkat(m_trail.current(), entry.name.c_str(), 0) != 0 && errno != ENOENT) {
                if (errno != EISDIR) {
                    return failure(entry.name, errno);
                }
                m_levels.back().folders.push_back(std::move(entry.name));
            }
        }
        return {};
    }

    Failure failure(const std::string& name, int code) const {
        std::string path = m_path;
        for (std::size_t i = 1; i < m_levels.size(); ++i) {
            path = posix::joinPath(path, m_levels[i].name);
        }
        return posix::fileError("remove", name.empty() ? path : posix::joinPath(path, name), code);
    }

    std::string m_path;
    Removal m_removal;
    FolderTrail m_trail;
    std::vector<Level> m_levels;
};

}  // namespace

Failure removeTree(const std::string& path, Removal removal) {
    if (Failure refused = posix::refusedPath("remove", path)) {
        return refused;
    }
    return removeTree(placeAt(path), removal);
}

Failure removeTree(const ItemPlace& item, Removal removal) {
    const auto failure = [&](int code) { return posix::fileError("remove", item.shown, code); };
    const char* plain = item.name.c_str();
    if (const std::string name = posix::splitPath(item.name).name; name == "." || name == "..") {
        return failure(EINVAL);
    }
    if (::unlinkat(item.folder, plain, 0) == 0) {
        return {};
    }
    if (errno != EISDIR) {
        return failure(errno);
    }
    if (::unlinkat(item.folder, plain, AT_REMOVEDIR) == 0) {
        return {};
    }
    if (errno != ENOTEMPTY && errno != EEXIST) {
        return failure(errno);
    }
    posix::Descriptor folder(::openat(item.folder, plain, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder) {
        return failure(errno);
    }
    if (Failure failed = FolderEmptier(std::move(folder), item.shown, removal).run()) {
        return failed;
    }
    if (::unlinkat(item.folder, plain, AT_REMOVEDIR) != 0) {
        return failure(errno);
    }
    return {};
}

}  // namespace platform::linux_host
