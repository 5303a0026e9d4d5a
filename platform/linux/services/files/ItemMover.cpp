#include "platform/linux/services/files/ItemMover.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/linux/services/files/FileErrors.h"
#include "platform/linux/services/files/ItemCopier.h"
#include "platform/linux/services/files/ItemRemover.h"
#include "platform/linux/services/files/PathParts.h"
#include "platform/linux/services/files/Staging.h"
#include "platform/posix/Descriptor.h"

namespace platform::linux_host {

namespace {

int unlinked(const std::string& path) { return ::unlink(path.c_str()) == 0 ? 0 : errno; }

// A folder takes part in its move to another folder, so that its mode has to allow that. One of the caller's own whose
// mode does not is opened up for the moment of the rename.
int renameFolderOpened(const std::string& from, const std::string& to) {
    const posix::Descriptor folder(::open(from.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
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

Failure moveAcross(const std::string& source, const std::string& destination) {
    if (Failure obstacle = findRemovalObstacle(source)) {
        return obstacle;
    }
    if (Failure failed = copyItem(source, destination)) {
        return failed;
    }
    struct stat status {};
    const bool isFolder = ::lstat(source.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
    const std::string staged = stagedSibling(source);
    const int code = isFolder ? renameWithoutReplacing(source, staged) : unlinked(source);
    if (code != 0) {
        (void)removeTree(destination, Removal::openingFolders);
        return fileError("move", source, destination, code);
    }
    if (!isFolder) {
        return {};
    }
    if (Failure failed = removeTree(staged, Removal::openingFolders)) {
        return Error{failed->code, "“" + source + "” was copied to “" + destination +
                                       "”, but a part of the original is left: " + failed->description};
    }
    return {};
}

}  // namespace

Failure moveItem(const std::string& source, const std::string& destination) {
    if (Failure refused = refusedPath("move", source)) {
        return refused;
    }
    if (Failure refused = refusedPath("move to", destination)) {
        return refused;
    }
    const std::string from = withoutTrailingSlashes(source);
    const std::string to = withoutTrailingSlashes(destination);
    int code = renameWithoutReplacing(from, to);
    if (code == EACCES) {
        code = renameFolderOpened(from, to);
    }
    if (code == EXDEV) {
        return moveAcross(from, to);
    }
    return code == 0 ? Failure{} : fileError("move", from, to, code);
}

}  // namespace platform::linux_host
