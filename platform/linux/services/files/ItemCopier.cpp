#include "platform/linux/services/files/ItemCopier.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "platform/linux/services/files/FileErrors.h"
#include "platform/linux/services/files/ItemRemover.h"
#include "platform/linux/services/files/PathParts.h"
#include "platform/linux/services/files/Staging.h"
#include "platform/linux/services/files/TreeCopier.h"

namespace platform::linux_host {

namespace {

// A copy in the making, from one plain path to another at which nothing stands.
class ItemCopier {
public:
    ItemCopier(std::string source, std::string destination)
        : m_source(std::move(source)), m_destination(std::move(destination)) {}

    Failure run() {
        struct stat status {};
        if (::lstat(m_source.c_str(), &status) != 0) {
            return fileError("read", m_source, errno);
        }
        struct stat standing {};
        if (::lstat(m_destination.c_str(), &standing) == 0) {
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
                return fileError("copy the pipe, socket or device", m_source, EOPNOTSUPP);
        }
    }

private:
    Failure copyFile() {
        const posix::Descriptor from(::open(m_source.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
        struct stat status {};
        if (!from || ::fstat(from.get(), &status) != 0) {
            return fileError("read", m_source, errno);
        }
        if (!S_ISREG(status.st_mode)) {
            return fileError("read", m_source, ESTALE);
        }
        std::optional<int> code = copyUnnamed(from.get(), status);
        if (!code) {
            code = ::lseek(from.get(), 0, SEEK_SET) < 0 ? errno : copyStaged(from.get(), status);
        }
        return *code == 0 ? Failure{} : failed(*code);
    }

    // None where the file system knows no files without a name, or cannot name them later.
    std::optional<int> copyUnnamed(int from, const struct stat& status) {
        const std::string folder = splitPath(m_destination).folder;
        const posix::Descriptor to(::open(folder.c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, 0600));
        if (!to) {
            return unlessUnsupported(errno);
        }
        if (const int code = copyOpenFile(from, status, to.get(), Inheritance::possible); code != 0) {
            return code;
        }
        if (::linkat(to.get(), "", AT_FDCWD, m_destination.c_str(), AT_EMPTY_PATH) == 0) {
            return 0;
        }
        if (errno != ENOENT) {
            return unlessUnsupported(errno);
        }
        // Older kernels want a right of the superuser for the call above.
        const std::string self = "/proc/self/fd/" + std::to_string(to.get());
        if (::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, m_destination.c_str(), AT_SYMLINK_FOLLOW) == 0) {
            return 0;
        }
        return errno == ENOENT ? std::nullopt : unlessUnsupported(errno);
    }

    int copyStaged(int from, const struct stat& status) {
        const std::string staged = stagedSibling(m_destination);
        posix::Descriptor to(::open(staged.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
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
        if (const int code = readLink(AT_FDCWD, m_source, target); code != 0) {
            return fileError("read", m_source, code);
        }
        const std::string staged = stagedSibling(m_destination);
        if (::symlink(target.c_str(), staged.c_str()) != 0) {
            return failed(errno);
        }
        const int code = publish(staged, copyLinkMetadata(status, AT_FDCWD, staged.c_str()));
        return code == 0 ? Failure{} : failed(code);
    }

    // A staged item that is not a folder gets its name, or goes.
    int publish(const std::string& staged, int code) {
        if (code == 0) {
            code = renameWithoutReplacing(staged, m_destination);
        }
        if (code != 0) {
            (void)::unlink(staged.c_str());
        }
        return code;
    }

    Failure copyFolder() {
        posix::Descriptor from(::open(m_source.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        if (!from) {
            return fileError("read", m_source, errno);
        }
        bool inside = false;
        if (const int code = findDestinationInside(from.get(), inside); code != 0) {
            return failed(code);
        }
        if (inside) {
            return Error{EINVAL, "Cannot copy the folder “" + m_source + "” into itself"};
        }
        const std::string staged = stagedSibling(m_destination);
        if (::mkdir(staged.c_str(), S_IRWXU) != 0) {
            return failed(errno);
        }
        // An access list that the folder above hands down can take its maker's own rights away.
        (void)::fchmodat(AT_FDCWD, staged.c_str(), S_IRWXU, AT_SYMLINK_NOFOLLOW);
        posix::Descriptor to(::open(staged.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
        Failure failure = to ? TreeCopier(std::move(from), m_source, std::move(to)).run() : failed(errno);
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
        posix::Descriptor at(::open(splitPath(m_destination).folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
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

    Failure failed(int code) const { return fileError("copy", m_source, m_destination, code); }

    std::string m_source;
    std::string m_destination;
};

}  // namespace

Failure copyItem(const std::string& source, const std::string& destination) {
    if (Failure refused = refusedPath("copy", source)) {
        return refused;
    }
    if (Failure refused = refusedPath("copy to", destination)) {
        return refused;
    }
    return ItemCopier(withoutTrailingSlashes(source), withoutTrailingSlashes(destination)).run();
}

}  // namespace platform::linux_host
