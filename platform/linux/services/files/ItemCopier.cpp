#include "platform/linux/services/files/ItemCopier.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "platform/linux/services/files/ItemRemover.h"
#include "platform/linux/services/files/Staging.h"
#include "platform/linux/services/files/TreeCopier.h"
#include "platform/posix/FileErrors.h"
#include "platform/posix/PathParts.h"

namespace platform::linux_host {

namespace {

// A copy in the making, from one place to another at which nothing stands.
class ItemCopier {
public:
    ItemCopier(ItemPlace source, ItemPlace destination)
        : m_source(std::move(source)), m_destination(std::move(destination)) {}

    Failure run() {
        struct stat status {};
        if (::fstatat(m_source.folder, m_source.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            return posix::fileError("read", m_source.shown, errno);
        }
        if (const int code = holdDestinationFolder(); code != 0) {
            return failed(code);
        }
        struct stat standing {};
        if (::fstatat(m_destination.folder, m_destination.name.c_str(), &standing, AT_SYMLINK_NOFOLLOW) == 0) {
            return failed(EEXIST);
        }
        switch (status.st_mode & S_IFMT) {
            case S_IFREG:
                return copyFile();
            case S_IFLNK:
                return copyLink(status);
            case S_IFDIR:
                return copyFolder();
            default:
                return posix::fileError("copy the pipe, socket or device", m_source.shown, EOPNOTSUPP);
        }
    }

private:
    int holdDestinationFolder() {
        const posix::PathParts parts = posix::splitPath(m_destination.name);
        if (parts.name.empty()) {
            return EEXIST;  // the root
        }
        m_folder.reset(::openat(m_destination.folder, parts.folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        if (!m_folder) {
            return errno;
        }
        m_destination.folder = m_folder.get();
        m_destination.name = parts.name;
        return 0;
    }

    Failure copyFile() {
        const posix::Descriptor from(
            ::openat(m_source.folder, m_source.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        struct stat status {};
        if (!from || ::fstat(from.get(), &status) != 0) {
            return posix::fileError("read", m_source.shown, errno);
        }
        if (!S_ISREG(status.st_mode)) {
            return posix::fileError("read", m_source.shown, ESTALE);
        }
        std::optional<int> code = copyUnnamed(from.get(), status);
        if (!code) {
            code = ::lseek(from.get(), 0, SEEK_SET) < 0 ? errno : copyStaged(from.get(), status);
        }
        return *code == 0 ? Failure{} : failed(*code);
    }

    // None where the file system knows no files without a name, or cannot name them later.
    std::optional<int> copyUnnamed(int from, const struct stat& status) {
        const posix::Descriptor to(::openat(m_folder.get(), ".", O_WRONLY | O_TMPFILE | O_CLOEXEC, 0600));
        if (!to) {
            return unlessUnsupported(errno);
        }
        if (const int code = copyOpenFile(from, status, to.get(), Inheritance::possible); code != 0) {
            return code;
        }
        if (::linkat(to.get(), "", m_folder.get(), m_destination.name.c_str(), AT_EMPTY_PATH) == 0) {
            return 0;
        }
        if (errno != ENOENT) {
            return unlessUnsupported(errno);
        }
        // Older kernels want a right of the superuser for the call above.
        const std::string self = "/proc/self/fd/" + std::to_string(to.get());
        if (::linkat(AT_FDCWD, self.c_str(), m_folder.get(), m_destination.name.c_str(), AT_SYMLINK_FOLLOW) == 0) {
            return 0;
        }
        return errno == ENOENT ? std::nullopt : unlessUnsupported(errno);
    }

    int copyStaged(int from, const struct stat& status) {
        const ItemPlace staged = stagedSibling(m_destination);
        posix::Descriptor to(
            ::openat(staged.folder, staged.name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
        if (!to) {
            return errno;
        }
        int code = copyOpenFile(from, status, to.get(), Inheritance::possible);
        if (::close(to.release()) != 0 && code == 0) {
            code = errno;  // a network's file system reports lost writes here
        }
        return publish(staged, code);
    }

    Failure copyLink(const struct stat& status) {
        std::string target;
        if (const int code = readLink(m_source.folder, m_source.name, target); code != 0) {
            return posix::fileError("read", m_source.shown, code);
        }
        const ItemPlace staged = stagedSibling(m_destination);
        if (::symlinkat(target.c_str(), staged.folder, staged.name.c_str()) != 0) {
            return failed(errno);
        }
        const int code = publish(staged, copyLinkMetadata(status, staged.folder, staged.name.c_str()));
        return code == 0 ? Failure{} : failed(code);
    }

    // A staged item that is not a folder gets its name, or goes.
    int publish(const ItemPlace& staged, int code) {
        if (code == 0) {
            code = renameWithoutReplacing(staged, m_destination);
        }
        if (code != 0) {
            (void)::unlinkat(staged.folder, staged.name.c_str(), 0);
        }
        return code;
    }

    Failure copyFolder() {
        posix::Descriptor from(
            ::openat(m_source.folder, m_source.name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!from) {
            return posix::fileError("read", m_source.shown, errno);
        }
        bool inside = false;
        if (const int code = findDestinationInside(from.get(), inside); code != 0) {
            return failed(code);
        }
        if (inside) {
            return Error{EINVAL, "Cannot copy the folder “" + m_source.shown + "” into itself"};
        }
        const ItemPlace staged = stagedSibling(m_destination);
        if (::mkdirat(staged.folder, staged.name.c_str(), S_IRWXU) != 0) {
            return failed(errno);
        }
        // An access list that the folder above hands down can take its maker's own rights away.
        (void)::fchmodat(staged.folder, staged.name.c_str(), S_IRWXU, AT_SYMLINK_NOFOLLOW);
        posix::Descriptor to(
            ::openat(staged.folder, staged.name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        Failure failure = to ? TreeCopier(std::move(from), m_source.shown, std::move(to)).run() : failed(errno);
        if (!failure) {
            const int code = renameWithoutReplacing(staged, m_destination);
            failure = code == 0 ? Failure{} : failed(code);
        }
        if (failure) {
            (void)removeTree(staged, Removal::openingFolders);
        }
        return failure;
    }

    // Climbs from the destination's folder to the root and looks for the source on the way.
    int findDestinationInside(int source, bool& inside) const {
        struct stat wanted {};
        posix::Descriptor at(::openat(m_folder.get(), ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
        struct stat here {};
        if (!at || ::fstat(source, &wanted) != 0 || ::fstat(at.get(), &here) != 0) {
            return errno;
        }
        for (;;) {
            if (here.st_dev == wanted.st_dev && here.st_ino == wanted.st_ino) {
                inside = true;
                return 0;
            }
            posix::Descriptor above(::openat(at.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
            struct stat next {};
            if (!above || ::fstat(above.get(), &next) != 0) {
                return errno;
            }
            if (next.st_dev == here.st_dev && next.st_ino == here.st_ino) {
                return 0;
            }
            at = std::move(above);
            here = next;
        }
    }

    static std::optional<int> unlessUnsupported(int code) {
        const bool unsupported =
            code == EOPNOTSUPP || code == EISDIR || code == ENOSYS || code == EINVAL || code == EPERM;
        return unsupported ? std::nullopt : std::optional(code);
    }

    Failure failed(int code) const { return posix::fileError("copy", m_source.shown, m_destination.shown, code); }

    ItemPlace m_source;
    ItemPlace m_destination;
    posix::Descriptor m_folder;  // that is to hold the copy
};

}  // namespace

Failure copyItem(const std::string& source, const std::string& destination) {
    if (Failure refused = posix::refusedPath("copy", source)) {
        return refused;
    }
    if (Failure refused = posix::refusedPath("copy to", destination)) {
        return refused;
    }
    return copyItem(placeAt(source), placeAt(destination));
}

Failure copyItem(const ItemPlace& source, const ItemPlace& destination) {
    return ItemCopier(source, destination).run();
}

}  // namespace platform::linux_host
