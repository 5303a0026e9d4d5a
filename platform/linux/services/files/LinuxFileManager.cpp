#include "platform/linux/services/files/LinuxFileManager.h"

#include <fcntl.h>
#include <linux/stat.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>

#include "platform/linux/services/files/FolderListing.h"
#include "platform/linux/services/files/ImmutableFlag.h"
#include "platform/linux/services/files/ItemCopier.h"
#include "platform/linux/services/files/ItemMover.h"
#include "platform/linux/services/files/ItemRemover.h"
#include "platform/linux/services/files/TreeCopier.h"
#include "platform/posix/AppendHandle.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/FileErrors.h"
#include "platform/posix/FileTypes.h"
#include "platform/posix/PathParts.h"
#include "platform/posix/WholeFile.h"

namespace platform::linux_host {

namespace {

constexpr const char* creationDateAttribute = "user.wickfield.creation-date";  // nanoseconds since 1970, in decimal

Date dateOf(const statx_timestamp& time) {
    return Date(std::chrono::duration_cast<Date::duration>(std::chrono::seconds(time.tv_sec) +
                                                           std::chrono::nanoseconds(time.tv_nsec)));
}

std::optional<Date> storedCreationDate(const std::string& path) {
    std::array<char, 24> text{};
    const ssize_t size = ::lgetxattr(path.c_str(), creationDateAttribute, text.data(), text.size());
    if (size <= 0) {
        return std::nullopt;
    }
    std::int64_t nanoseconds = 0;
    const char* end = text.data() + size;
    const auto [rest, problem] = std::from_chars(text.data(), end, nanoseconds);
    if (problem != std::errc{} || rest != end) {
        return std::nullopt;
    }
    return Date(std::chrono::duration_cast<Date::duration>(std::chrono::nanoseconds(nanoseconds)));
}

bool isAccessible(const std::string& path, int mode) {
    return ::faccessat(AT_FDCWD, posix::systemPath(path), mode, AT_EACCESS) == 0;
}

int makeFolder(const std::string& path) { return ::mkdir(path.c_str(), 0777) == 0 ? 0 : errno; }

// Climbs until a folder can be made or is there, then makes what was missing below it.
int makeFolders(const std::string& path, LinuxFileManager& files) {
    std::vector<std::string> missing{posix::withoutTrailingSlashes(path)};
    int code = makeFolder(missing.back());
    while (code == ENOENT && posix::splitPath(missing.back()).folder != missing.back()) {
        missing.push_back(posix::splitPath(missing.back()).folder);
        code = makeFolder(missing.back());
    }
    for (;;) {
        if (code != 0 && !files.isFolder(missing.back())) {
            return code;
        }
        missing.pop_back();
        if (missing.empty()) {
            return 0;
        }
        code = makeFolder(missing.back());
    }
}

}  // namespace

bool LinuxFileManager::fileExists(const std::string& path) {
    return ::faccessat(AT_FDCWD, posix::systemPath(path), F_OK, 0) == 0;
}

bool LinuxFileManager::isFolder(const std::string& path) {
    struct stat status {};
    return ::stat(posix::systemPath(path), &status) == 0 && S_ISDIR(status.st_mode);
}

bool LinuxFileManager::isWritable(const std::string& path) { return isAccessible(path, W_OK); }

bool LinuxFileManager::isExecutable(const std::string& path) { return isAccessible(path, X_OK); }

std::optional<FileIdentity> LinuxFileManager::identity(const std::string& path) {
    struct stat status {};
    if (::stat(posix::systemPath(path), &status) != 0) {
        return std::nullopt;
    }
    return FileIdentity{status.st_dev, status.st_ino};
}

std::optional<FileAttributes> LinuxFileManager::attributes(const std::string& path) {
    struct statx status {};
    if (::statx(AT_FDCWD, posix::systemPath(path), AT_SYMLINK_NOFOLLOW, STATX_BASIC_STATS | STATX_BTIME, &status) !=
        0) {
        return std::nullopt;
    }
    FileAttributes attributes;
    attributes.type = posix::typeOfMode(status.stx_mode);
    attributes.size = status.stx_size;
    attributes.permissions = status.stx_mode & 07777U;
    attributes.immutable = (status.stx_attributes & STATX_ATTR_IMMUTABLE) != 0;
    attributes.modificationDate = dateOf(status.stx_mtime);
    attributes.creationDate = storedCreationDate(path);
    if (!attributes.creationDate && (status.stx_mask & STATX_BTIME) != 0) {
        attributes.creationDate = dateOf(status.stx_btime);
    }
    return attributes;
}

std::optional<std::string> LinuxFileManager::destinationOfSymbolicLink(const std::string& path) {
    std::string target;
    return readLink(AT_FDCWD, posix::systemPath(path), target) == 0 ? std::optional(std::move(target)) : std::nullopt;
}

std::optional<std::vector<DirectoryEntry>> LinuxFileManager::contentsOfDirectory(const std::string& path) {
    const posix::Descriptor folder(::open(posix::systemPath(path), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    std::vector<DirectoryEntry> entries;
    if (!folder || listFolder(folder.get(), entries) != 0) {
        return std::nullopt;
    }
    return entries;
}

bool LinuxFileManager::visitDirectory(const std::string& path, VisitSizes sizes,
                                      const std::function<void(const VisitedEntry&)>& visit) {
    const posix::Descriptor folder(::open(posix::systemPath(path), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return folder && visitFolder(folder.get(), sizes, visit) == 0;
}

Failure LinuxFileManager::removeItem(const std::string& path) { return removeTree(path, Removal::asPermitted); }

Failure LinuxFileManager::createDirectory(const std::string& path, Intermediates intermediates) {
    if (Failure refused = posix::refusedPath("create the folder", path)) {
        return refused;
    }
    const int code = intermediates == Intermediates::yes ? makeFolders(path, *this) : makeFolder(path);
    return code == 0 ? Failure{} : posix::fileError("create the folder", path, code);
}

Failure LinuxFileManager::copyItem(const std::string& source, const std::string& destination) {
    return linux_host::copyItem(source, destination);
}

Failure LinuxFileManager::moveItem(const std::string& source, const std::string& destination) {
    return linux_host::moveItem(source, destination);
}

Failure LinuxFileManager::setImmutable(const std::string& path, bool immutable) {
    return setImmutableFlag(path, immutable);
}

Failure LinuxFileManager::setPermissions(const std::string& path, unsigned permissions) {
    if (Failure refused = posix::refusedPath("set the permissions of", path)) {
        return refused;
    }
    if (::chmod(path.c_str(), permissions & 07777U) != 0) {
        return posix::fileError("set the permissions of", path, errno);
    }
    return {};
}

Failure LinuxFileManager::setCreationDate(const std::string& path, Date date) {
    if (Failure refused = posix::refusedPath("set the creation date of", path)) {
        return refused;
    }
    const auto nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(date.time_since_epoch()).count();
    const std::string text = std::to_string(nanoseconds);
    if (::lsetxattr(path.c_str(), creationDateAttribute, text.data(), text.size(), 0) != 0) {
        return posix::fileError("set the creation date of", path, errno);
    }
    return {};
}

Failure LinuxFileManager::writeAtomically(const std::string& path, std::string_view contents) {
    return posix::replaceFile(path, contents);
}

std::optional<std::string> LinuxFileManager::readFile(const std::string& path, std::uint64_t limit) {
    return posix::readWholeFile(path, limit);
}

std::unique_ptr<FileManager::AppendHandle> LinuxFileManager::openForAppending(const std::string& path) {
    return posix::openAppendHandle(path);
}

}  // namespace platform::linux_host
