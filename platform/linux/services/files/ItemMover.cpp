#include "platform/linux/services/files/ItemMover.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/services/files/ItemCopier.h"
#include "platform/linux/services/files/ItemRemover.h"
#include "platform/linux/services/files/Staging.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/FileErrors.h"
#include "platform/posix/PathParts.h"

namespace platform::linux_host {

namespace {

int unlinked(const ItemPlace& item) { return ::unlinkat(item.folder, item.name.c_str(), 0) == 0 ? 0 : errno; }

// A folder takes part in its move to another folder, so that its mode has to allow that. One of the caller's own whose
// mode does not is opened up for the moment of the rename.
int renameFolderOpened(const ItemPlace& from, const ItemPlace& to) {
    const posix::Descriptor folder(
        ::openat(from.folder, from.name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!folder || ::fstat(folder.get(), &status) != 0 || (status.st_mode & S_IWUSR) != 0) {
        return EACCES;
    }
    const mode_t mode = status.st_mode & 07777U;
    if (::fchmod(folder.get(), mode | S_IWUSR) != 0) {
        return EACCES;
    }
    const int code = renameWithoutReplacing(from, to);
    (void)::fchmod(folder.get(), mode);
    return code;
}

Failure moveAcross(const ItemPlace& source, const ItemPlace& destination) {
    if (Failure obstacle = findRemovalObstacle(source)) {
        return obstacle;
    }
    if (Failure failed = copyItem(source, destination)) {
        return failed;
    }
    struct stat status {};
    const bool isFolder =
        ::fstatat(source.folder, source.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
    const ItemPlace staged = stagedSibling(source);
    const int code = isFolder ? renameWithoutReplacing(source, staged) : unlinked(source);
    if (code != 0) {
        (void)removeTree(destination, Removal::openingFolders);
        return posix::fileError("move", source.shown, destination.shown, code);
    }
    if (!isFolder) {
        return {};
    }
    if (Failure failed = removeTree(staged, Removal::openingFolders)) {
        return Error{failed->code, "“" + source.shown + "” was copied to “" + destination.shown +
                                       "”, but a part of the original is left: " + failed->description};
    }
    return {};
}

}  // namespace

Failure moveItem(const std::string& source, const std::string& destination) {
    if (Failure refused = posix::refusedPath("move", source)) {
        return refused;
    }
    if (Failure refused = posix::refusedPath("move to", destination)) {
        return refused;
    }
    return moveItem(placeAt(source), placeAt(destination));
}

Failure moveItem(const ItemPlace& from, const ItemPlace& to) {
    int code = renameWithoutReplacing(from, to);
    if (code == EACCES) {
        code = renameFolderOpened(from, to);
    }
    if (code == EXDEV) {
        return moveAcross(from, to);
    }
    return code == 0 ? Failure{} : posix::fileError("move", from.shown, to.shown, code);
}

}  // namespace platform::linux_host
