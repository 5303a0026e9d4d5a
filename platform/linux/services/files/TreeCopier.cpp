#include "platform/linux/services/files/TreeCopier.h"

#include <fcntl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/linux/services/files/FileContents.h"
#include "platform/linux/services/files/FolderListing.h"
#include "platform/posix/FileErrors.h"
#include "platform/posix/PathParts.h"

namespace platform::linux_host {

int copyOpenFile(int from, const struct stat& status, int to, Inheritance inheritance) {
    const int code = copyContents(from, status, to);
    return code != 0 ? code : copyMetadata(from, status, to, inheritance);
}

int readLink(int folder, const std::string& name, std::string& target) {
    target.resize(256);
    for (;;) {
        const ssize_t size = ::readlinkat(folder, name.c_str(), target.data(), target.size());
        if (size < 0) {
            return errno;
        }
        if (static_cast<std::size_t>(size) < target.size()) {
            target.resize(static_cast<std::size_t>(size));
            return 0;
        }
        target.resize(target.size() * 2);
    }
}

TreeCopier::TreeCopier(posix::Descriptor from, std::string fromPath, posix::Descriptor to)
    : m_path(std::move(fromPath)), m_from(std::move(from)), m_to(std::move(to)) {
    m_levels.emplace_back();
}

Failure TreeCopier::run() {
    if (::fstat(m_from.current(), &m_levels.back().status) != 0) {
        return failure("read", {}, errno);
    }
    // Nothing made below may inherit what the copy itself inherited. Refusals leave the list to the check at the end.
    (void)::fremovexattr(m_to.current(), "system.posix_acl_default");
    if (Failure failed = copyEntries()) {
        return failed;
    }
    while (m_levels.size() > 1 || !m_levels.back().folders.empty()) {
        if (Failure failed = m_levels.back().folders.empty() ? finishFolder() : startFolder()) {
            return failed;
        }
    }
    const int code = copyMetadata(m_from.current(), m_levels.back().status, m_to.current(), Inheritance::possible);
    return code == 0 ? Failure{} : failure("copy", {}, code);
}

Failure TreeCopier::copyEntries() {
    std::vector<DirectoryEntry> entries;
    if (const int code = listFolder(m_from.current(), entries); code != 0) {
        return failure("read", {}, code);
    }
    for (DirectoryEntry& entry : entries) {
        if (Failure failed = copyEntry(entry)) {
            return failed;
        }
    }
    return {};
}

Failure TreeCopier::copyEntry(DirectoryEntry& entry) {
    if (entry.type == FileType::unknown) {
        struct stat status {};
        if (::fstatat(m_from.current(), entry.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            return failure("read", entry.name, errno);
        }
        entry.type = S_ISREG(status.st_mode)   ? FileType::regular
                     : S_ISDIR(status.st_mode) ? FileType::folder
                     : S_ISLNK(status.st_mode) ? FileType::symbolicLink
                                               : FileType::other;
    }
    switch (entry.type) {
        case FileType::regular:
            return copyFile(entry.name);
        case FileType::symbolicLink:
            return copyLink(entry.name);
        case FileType::folder:
            m_levels.back().folders.push_back(std::move(entry.name));
            return {};
        default:
            return failure("copy the pipe, socket or device", entry.name, EOPNOTSUPP);
    }
}

Failure TreeCopier::copyFile(const std::string& name) {
    const posix::Descriptor from(
        ::openat(m_from.current(), name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!from || ::fstat(from.get(), &status) != 0) {
        return failure("read", name, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return failure("read", name, ESTALE);  // exchanged since the folder was listed
    }
    const posix::Descriptor to(::openat(m_to.current(), name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!to) {
        return failure("copy", name, errno);
    }
    const int code = copyOpenFile(from.get(), status, to.get(), Inheritance::none);
    return code == 0 ? Failure{} : failure("copy", name, code);
}

Failure TreeCopier::copyLink(const std::string& name) {
    struct stat status {};
    std::string target;
    if (::fstatat(m_from.current(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return failure("read", name, errno);
    }
    if (const int code = readLink(m_from.current(), name, target); code != 0) {
        return failure("read", name, code);
    }
    if (::symlinkat(target.c_str(), m_to.current(), name.c_str()) != 0) {
        return failure("copy", name, errno);
    }
    const int code = copyLinkMetadata(status, m_to.current(), name.c_str());
    return code == 0 ? Failure{} : failure("copy", name, code);
}

Failure TreeCopier::startFolder() {
    Level& above = m_levels.back();
    Level level;
    level.name = std::move(above.folders.back());
    above.folders.pop_back();
    const std::string& name = level.name;
    if (const int code = m_from.enter(name); code != 0) {
        return failure("read", name, code);
    }
    if (::fstat(m_from.current(), &level.status) != 0) {
        return failure("read", name, errno);
    }
    if (::mkdirat(m_to.current(), name.c_str(), S_IRWXU) != 0) {
        return failure("copy", name, errno);
    }
    if (const int code = m_to.enter(name); code != 0) {
        return failure("copy", name, code);
    }
    m_levels.push_back(std::move(level));
    return copyEntries();
}

Failure TreeCopier::finishFolder() {
    int code = copyMetadata(m_from.current(), m_levels.back().status, m_to.current(), Inheritance::none);
    if (code == 0) {
        code = m_from.leave();
    }
    if (code == 0) {
        code = m_to.leave();
    }
    if (code != 0) {
        return failure("copy", {}, code);
    }
    m_levels.pop_back();
    return {};
}

Failure TreeCopier::failure(std::string_view doing, const std::string& name, int code) const {
    std::string path = m_path;
    for (std::size_t i = 1; i < m_levels.size(); ++i) {
        path = posix::joinPath(path, m_levels[i].name);
    }
    return posix::fileError(doing, name.empty() ? path : posix::joinPath(path, name), code);
}

}  // namespace platform::linux_host
