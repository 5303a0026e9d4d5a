#include "platform/linux/services/workspace/Trash.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <optional>

#include "platform/linux/services/files/FileErrors.h"
#include "platform/linux/services/files/PathParts.h"
#include "platform/linux/services/workspace/Mounts.h"
#include "platform/linux/services/workspace/TrashFolder.h"

namespace platform::linux_host {

namespace {

bool isFolder(const std::string& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool isSameItem(const std::string& path, const std::string& other) {
    struct stat one {};
    struct stat two {};
    return ::stat(path.c_str(), &one) == 0 && ::stat(other.c_str(), &two) == 0 && one.st_dev == two.st_dev &&
           one.st_ino == two.st_ino;
}

// The user whom the superuser acts for; none when everybody acts for himself.
std::optional<Owner> ownerOf(const std::string& home) {
    struct stat status {};
    if (::geteuid() != 0 || ::stat(home.c_str(), &status) != 0 || status.st_uid == 0) {
        return std::nullopt;
    }
    return Owner{status.st_uid, status.st_gid};
}

// The folder and those above it, as far as they are missing; the user's home folder is never made.
bool makeFoldersBelow(const std::string& home, const std::string& path, const std::optional<Owner>& owner) {
    if (isFolder(path)) {
        return true;
    }
    if (path == home || splitPath(path).folder == path || !makeFoldersBelow(home, splitPath(path).folder, owner)) {
        return false;
    }
    return makePrivateFolder(path, owner);
}

void linkTrash(const std::string& link, const std::string& items, const std::optional<Owner>& owner) {
    const std::string home = splitPath(link).folder + "/";
    const std::string target = items.starts_with(home) ? items.substr(home.size()) : items;
    if (::symlink(target.c_str(), link.c_str()) == 0 && owner) {
        (void)::lchown(link.c_str(), owner->user, owner->group);
    }
}

std::optional<TrashFolder> userTrash(const UserTrash& trash, const std::optional<Owner>& owner) {
    struct stat status {};
    const bool absent = ::lstat(trash.folder.c_str(), &status) != 0;
    if (!absent && S_ISDIR(status.st_mode)) {
        return TrashFolder{trash.folder, std::nullopt, {}, owner};
    }
    std::optional<TrashFolder> standard;
    const std::string root = joinPath(trash.dataHome, "Trash");
    if (makeFoldersBelow(splitPath(trash.folder).folder, root, owner)) {
        standard = makeTrash(root, owner);
    }
    if (!absent && isFolder(trash.folder) && !(standard && isSameItem(trash.folder, standard->items))) {
        return TrashFolder{trash.folder, std::nullopt, {}, owner};
    }
    if (absent && standard) {
        linkTrash(trash.folder, standard->items, owner);
    }
    return standard;
}

std::optional<TrashFolder> fileSystemTrash(const std::string& folder, const std::optional<Owner>& owner) {
    const std::string top = mountPointOf(folder);
    if (top.empty() || top == "/") {
        return std::nullopt;
    }
    const std::string user = std::to_string(owner ? owner->user : ::geteuid());
    std::string root = top + "/.Trash";
    struct stat status {};
    const bool shared =
        ::lstat(root.c_str(), &status) == 0 && S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0;
    root += (shared ? "/" : "-") + user;
    if (!makePrivateFolder(root, owner)) {
        return std::nullopt;
    }
    std::optional<TrashFolder> trash = makeTrash(root, owner);
    if (trash) {
        trash->topFolder = top;
    }
    return trash;
}

}  // namespace

Failure recycleItem(const std::string& folder, const std::string& name, const UserTrash& trash) {
    const std::string path = joinPath(folder, name);
    if (Failure refused = refusedPath("move to the Trash", path)) {
        return refused;
    }
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos) {
        return fileError("move to the Trash", path, EINVAL);
    }
    struct stat status {};
    const std::unique_ptr<char, decltype(&std::free)> realFolder(::realpath(folder.c_str(), nullptr), &std::free);
    if (!realFolder || ::lstat(path.c_str(), &status) != 0) {
        return fileError("move to the Trash", path, errno);
    }
    const std::string real = joinPath(realFolder.get(), name);
    const std::optional<Owner> owner = ownerOf(splitPath(trash.folder).folder);
    const std::optional<TrashFolder> own = userTrash(trash, owner);
    if (own && areOnSameMount(realFolder.get(), own->items)) {
        return moveIntoTrash(real, *own);
    }
    if (const auto beside = fileSystemTrash(realFolder.get(), owner)) {
        Failure failed = moveIntoTrash(real, *beside);
        if (!failed || !own) {
            return failed;
        }
    }
    return own ? moveIntoTrash(real, *own) : fileError("find or make the Trash at", trash.folder, EACCES);
}

}  // namespace platform::linux_host
