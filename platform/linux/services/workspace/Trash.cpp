#include "platform/linux/services/workspace/Trash.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "platform/linux/services/files/ActingAs.h"
#include "platform/linux/services/workspace/Mounts.h"
#include "platform/linux/services/workspace/TrashFolder.h"
#include "platform/posix/FileErrors.h"
#include "platform/posix/PathParts.h"
#include "platform/posix/RealPath.h"

namespace platform::linux_host {

namespace {

using User = std::optional<Owner>;

posix::Descriptor openFolder(int folder, const std::string& path, int flags = 0) {
    return posix::Descriptor(::openat(folder, path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC | flags));
}

bool isSameFolder(int folder, int other) {
    struct stat one {};
    struct stat two {};
    return ::fstat(folder, &one) == 0 && ::fstat(other, &two) == 0 && one.st_dev == two.st_dev &&
           one.st_ino == two.st_ino;
}

// The user whom the superuser acts for; none when everybody acts for himself.
User userOf(const std::string& home) {
    struct stat status {};
    if (::geteuid() != 0 || ::stat(home.c_str(), &status) != 0 || status.st_uid == 0) {
        return std::nullopt;
    }
    return Owner{status.st_uid, status.st_gid};
}

// The folder and those above it, made as far as they are missing; the user's home folder is never made.
posix::Descriptor makeFoldersBelow(const std::string& home, const std::string& path, const User& user) {
    posix::Descriptor there = openFolder(AT_FDCWD, path);
    const posix::PathParts parts = posix::splitPath(path);
    if (there || errno != ENOENT || path == home || parts.name.empty()) {
        return there;
    }
    const posix::Descriptor above = makeFoldersBelow(home, parts.folder, user);
    return above ? privateFolder(above.get(), parts.name, user) : posix::Descriptor();
}

std::optional<TrashFolder> standardTrash(const std::string& home, const std::string& path, const User& user) {
    const posix::Descriptor root = makeFoldersBelow(home, path, user);
    return root ? makeTrash(root.get(), path, user) : std::nullopt;
}

// A folder of the user's that serves as his Trash.
std::optional<TrashFolder> plainTrash(int home, const std::string& path, int flags, const User& user) {
    posix::Descriptor items = openFolder(home, posix::splitPath(path).name, flags);
    if (!items || (user && !belongsTo(items.get(), user))) {
        return std::nullopt;
    }
    return TrashFolder{.items = std::move(items), .notes = {}, .path = path, .topFolder = {}, .user = user};
}

std::optional<TrashFolder> userTrash(const UserTrash& trash, const User& user) {
    const ActingAs rights(user);
    const std::string homePath = posix::splitPath(trash.folder).folder;
    const posix::Descriptor home = rights ? openFolder(AT_FDCWD, homePath) : posix::Descriptor();
    if (!home) {
        return std::nullopt;
    }
    if (auto plain = plainTrash(home.get(), trash.folder, O_NOFOLLOW, user)) {
        return plain;
    }
    auto standard = standardTrash(homePath, posix::joinPath(trash.dataHome, "Trash"), user);
    auto elsewhere = plainTrash(home.get(), trash.folder, 0, user);
    if (elsewhere && !(standard && isSameFolder(elsewhere->items.get(), standard->items.get()))) {
        return elsewhere;
    }
    if (standard) {
        const std::string below = posix::joinPath(homePath, "");
        const std::string target =
            standard->path.starts_with(below) ? standard->path.substr(below.size()) : standard->path;
        (void)::symlinkat(target.c_str(), home.get(),
                          posix::splitPath(trash.folder).name.c_str());  // unless anything is there
    }
    return standard;
}

// Made by the superuser where the user may not, in a folder that nobody but the superuser changes: what was made there
// is what is given away.
posix::Descriptor folderMadeFor(const Owner& user, int parent, const std::string& name) {
    struct stat status {};
    if (::fstat(parent, &status) != 0 || status.st_uid != 0 || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0 ||
        ::mkdirat(parent, name.c_str(), S_IRWXU) != 0) {
        return {};
    }
    posix::Descriptor folder = openFolder(parent, name, O_NOFOLLOW);
    return folder && ::fchownat(folder.get(), "", user.user, user.group, AT_EMPTY_PATH) == 0 ? std::move(folder)
                                                                                             : posix::Descriptor();
}

std::optional<TrashFolder> fileSystemTrash(const std::string& topFolder, const User& user) {
    const std::string number = std::to_string(user ? user->user : ::geteuid());
    const posix::Descriptor top = openFolder(AT_FDCWD, topFolder);
    if (!top) {
        return std::nullopt;
    }
    std::string path = posix::joinPath(topFolder, ".Trash/" + number);
    posix::Descriptor root;
    const posix::Descriptor shared = openFolder(top.get(), ".Trash", O_NOFOLLOW);
    struct stat status {};
    if (shared && ::fstat(shared.get(), &status) == 0 && (status.st_mode & S_ISVTX) != 0) {
        root = privateFolder(shared.get(), number, user);
    }
    if (!root) {
        path = posix::joinPath(topFolder, ".Trash-" + number);
        root = privateFolder(top.get(), ".Trash-" + number, user);
    }
    if (!root && user) {
        root = folderMadeFor(*user, top.get(), ".Trash-" + number);
    }
    auto trash = root ? makeTrash(root.get(), path, user) : std::nullopt;
    if (trash) {
        trash->topFolder = topFolder;
    }
    return trash;
}

}  // namespace

Failure recycleItem(const std::string& folder, const std::string& name, const UserTrash& trash) {
    const std::string path = posix::joinPath(folder, name);
    if (Failure refused = posix::refusedPath("move to the Trash", path)) {
        return refused;
    }
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos) {
        return posix::fileError("move to the Trash", path, EINVAL);
    }
    const std::string realFolder = posix::realPath(folder);
    const posix::Descriptor source = realFolder.empty() ? posix::Descriptor() : openFolder(AT_FDCWD, realFolder);
    struct stat status {};
    if (!source || ::fstatat(source.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return posix::fileError("move to the Trash", path, errno);
    }
    const ItemPlace item{.folder = source.get(), .name = name, .shown = posix::joinPath(realFolder, name)};
    const User user = userOf(posix::splitPath(trash.folder).folder);
    const std::optional<TrashFolder> own = userTrash(trash, user);
    if (own && areOnSameMount(source.get(), own->items.get())) {
        return moveIntoTrash(item, *own);
    }
    const std::string top = mountPointOf(realFolder);
    const bool isLastResort = !own && user;
    if (!top.empty() && (top != "/" || isLastResort)) {
        if (const auto beside = fileSystemTrash(top, user)) {
            Failure failed = moveIntoTrash(item, *beside);
            if (!failed || !own) {
                return failed;
            }
        }
    }
    return own ? moveIntoTrash(item, *own) : posix::fileError("find or make the Trash at", trash.folder, EACCES);
}

}  // namespace platform::linux_host
