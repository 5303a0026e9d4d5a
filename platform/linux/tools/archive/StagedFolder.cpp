#include "platform/linux/tools/archive/StagedFolder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>
#include <vector>

#include "platform/linux/services/files/FolderListing.h"
#include "platform/linux/services/files/ItemRemover.h"
#include "platform/linux/services/files/Staging.h"
#include "platform/linux/tools/archive/FileBytes.h"
#include "platform/posix/PathParts.h"
#include "platform/posix/StagedName.h"

namespace platform::linux_host {

namespace {

constexpr int openFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

void makeFolders(const std::string& path) {
    if (::mkdir(path.c_str(), 0777) == 0 || errno == EEXIST) {
        return;
    }
    const std::string parent = posix::splitPath(path).folder;
    if (errno != ENOENT || parent == path || path.empty()) {
        failWithErrno("cannot make", path, errno);
    }
    makeFolders(parent);
    if (::mkdir(path.c_str(), 0777) != 0 && errno != EEXIST) {
        failWithErrno("cannot make", path, errno);
    }
}

bool isFolder(int folder, const std::string& name) {
    struct stat status {};
    return ::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

posix::Descriptor openInside(int folder, const std::string& name) {
    posix::Descriptor opened(::openat(folder, name.c_str(), openFlags));
    if (!opened) {
        failWithErrno("cannot open", name, errno);
    }
    return opened;
}

std::vector<DirectoryEntry> entriesOf(int folder) {
    std::vector<DirectoryEntry> entries;
    const bool atStart = ::lseek(folder, 0, SEEK_SET) == 0;  // it may have been listed before
    if (const int code = atStart ? listFolder(folder, entries) : errno; code != 0) {
        failWithErrno("cannot list", "the unpacked items", code);
    }
    return entries;
}

// An errno where items cannot be moved from one folder to the other.
int obstacleBetween(int from, int to) {
    struct stat source {};
    struct stat destination {};
    if (::fstat(from, &source) != 0 || ::fstat(to, &destination) != 0) {
        return errno;
    }
    if (source.st_dev != destination.st_dev) {
        return EXDEV;
    }
    return ::faccessat(to, ".", W_OK | X_OK, AT_EACCESS) == 0 ? 0 : errno;
}

// Looks for what would stop mergeInto, which cannot be undone half-way.
void checkMerge(int from, int to, const std::string& path) {
    bool bringsItems = false;
    for (const auto& entry : entriesOf(from)) {
        const std::string inner = path.empty() ? entry.name : posix::joinPath(path, entry.name);
        const bool bringsFolder = isFolder(from, entry.name);
        const bool meetsFolder = isFolder(to, entry.name);
        if (bringsFolder && meetsFolder) {
            checkMerge(openInside(from, entry.name).get(), openInside(to, entry.name).get(), inner);
        } else if (meetsFolder) {
            failWithErrno("cannot replace", inner, EISDIR);
        } else {
            bringsItems = true;
        }
    }
    if (const int code = bringsItems ? obstacleBetween(from, to) : 0; code != 0) {
        failWithErrno("cannot unpack into", path, code);
    }
}

void mergeInto(int from, int to) {
    for (const auto& entry : entriesOf(from)) {
        const std::string& name = entry.name;
        const bool bringsFolder = isFolder(from, name);
        if (bringsFolder && isFolder(to, name)) {
            const posix::Descriptor inner = openInside(from, name);
            const posix::Descriptor outer = openInside(to, name);
            mergeInto(inner.get(), outer.get());
            continue;
        }
        if (bringsFolder && ::unlinkat(to, name.c_str(), 0) != 0 && errno != ENOENT) {
            failWithErrno("cannot replace", name, errno);
        }
        if (::renameat(from, name.c_str(), to, name.c_str()) != 0) {
            failWithErrno("cannot replace", name, errno);
        }
    }
}

}  // namespace

StagedFolder::StagedFolder(const std::string& destination) : m_destination(posix::withoutTrailingSlashes(destination)) {
    struct stat status {};
    m_isNew = ::lstat(m_destination.c_str(), &status) != 0;
    if (m_isNew && errno != ENOENT) {
        failWithErrno("cannot open", destination, errno);
    }
    if (m_isNew) {
        makeFolders(posix::splitPath(m_destination).folder);
        m_path = posix::stagedSibling(m_destination);
    } else {
        m_path = posix::joinPath(m_destination, posix::stagedName());
    }
    if (::mkdir(m_path.c_str(), 0700) != 0) {
        failWithErrno("cannot unpack into", destination, errno);
    }
    m_folder.reset(::open(m_path.c_str(), openFlags));
    if (!m_folder) {
        const int code = errno;
        (void)::rmdir(m_path.c_str());
        failWithErrno("cannot unpack into", destination, code);
    }
}

StagedFolder::~StagedFolder() {
    if (!m_path.empty()) {
        (void)removeTree(m_path, Removal::openingFolders);
    }
}

posix::Descriptor StagedFolder::takePlace() {
    if (m_isNew) {
        if (const int code = renameWithoutReplacing(placeAt(m_path), placeAt(m_destination)); code != 0) {
            failWithErrno("cannot make", m_destination, code);
        }
        m_path.clear();
        return std::move(m_folder);
    }
    posix::Descriptor destination(::open(m_destination.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!destination) {
        failWithErrno("cannot open", m_destination, errno);
    }
    checkMerge(m_folder.get(), destination.get(), {});
    mergeInto(m_folder.get(), destination.get());
    return destination;
}

}  // namespace platform::linux_host
