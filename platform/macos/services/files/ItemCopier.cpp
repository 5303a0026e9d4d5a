#include "platform/macos/services/files/ItemCopier.h"

#include <copyfile.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "platform/macos/services/files/Staging.h"
#include "platform/macos/services/files/TreeRemoval.h"
#include "platform/posix/PathParts.h"
#include "platform/posix/RealPath.h"
#include "platform/posix/StagedName.h"

namespace platform::macos {

namespace {

constexpr unsigned flagsAgainstRenaming = UF_IMMUTABLE | UF_APPEND;

// A copy within the folder that is copied would never come to its end.
bool liesWithin(const std::string& folder, const std::string& other) {
    const std::string outer = posix::realPath(folder);
    const std::string inner = posix::realPath(other);
    return !outer.empty() && (inner == outer || inner.starts_with(outer == "/" ? outer : outer + "/"));
}

bool exists(const std::string& path, struct stat& status) { return ::lstat(path.c_str(), &status) == 0; }

int copyBy(copyfile_flags_t how, const std::string& source, const std::string& staged) {
    return ::copyfile(source.c_str(), staged.c_str(), nullptr, how) == 0 ? 0 : errno;
}

int copyFolder(const std::string& source, const std::string& staged) {
    constexpr copyfile_flags_t how = COPYFILE_ALL | COPYFILE_NOFOLLOW | COPYFILE_RECURSIVE;
    // With a "/" at its end the path would stand for what lies in the folder.
    const std::string folder = posix::withoutTrailingSlashes(source);
    const int code = copyBy(how | COPYFILE_CLONE, folder, staged);
    if (code != EACCES && code != EPERM) {
        return code;
    }
    // Once a folder in it cannot be cloned, a read-only or locked one may get its mode or flags before its contents.
    (void)removeUnlocking(staged);
    return copyBy(how, folder, staged);
}

// A clone of a file loses the bits that let it run as somebody else.
int copyAlone(const std::string& source, const std::string& staged, mode_t mode) {
    const bool runsAsAnother = S_ISREG(mode) && (mode & (S_ISUID | S_ISGID)) != 0;
    return copyBy(COPYFILE_ALL | COPYFILE_NOFOLLOW | (runsAsAnother ? 0 : COPYFILE_CLONE), source, staged);
}

// Where the file system has no such call, or knows no way.
bool cannotRenameInOneStep(int code) { return code == ENOTSUP || code == ENOSYS; }

int rename(const std::string& from, const std::string& to, PlainMove plainMove) {
    const int code = renameWithoutReplacing(from, to);
    return cannotRenameInOneStep(code) ? plainMove(from, to) : code;
}

// An item that is locked keeps its name: it is unlocked for the moment of the rename, and stays so when that fails.
int renameUnlocked(const std::string& from, const std::string& to, PlainMove plainMove) {
    struct stat status {};
    if (!exists(from, status)) {
        return errno;
    }
    const unsigned flags = status.st_flags;
    if ((flags & flagsAgainstRenaming) == 0) {
        return rename(from, to, plainMove);
    }
    if (::lchflags(from.c_str(), flags & ~flagsAgainstRenaming) != 0) {
        return errno;
    }
    const int code = rename(from, to, plainMove);
    if (code == 0) {
        (void)::lchflags(to.c_str(), flags);
    }
    return code;
}

int moveAcross(const std::string& source, const std::string& destination, PlainMove plainMove) {
    if (const int code = removalObstacle(source); code != 0) {
        return code;
    }
    if (const int code = copyWithoutReplacing(source, destination, plainMove); code != 0) {
        return code;
    }
    // The original goes in one step, too, before its parts go: what cannot be renamed could not be removed.
    const std::string leaving = posix::stagedSibling(source);
    if (const int code = rename(source, leaving, plainMove); code != 0) {
        (void)removeUnlocking(destination);
        return code;
    }
    return removeUnlocking(leaving);
}

}  // namespace

int copyWithoutReplacing(const std::string& source, const std::string& destination, PlainMove plainMove) {
    struct stat status {};
    if (!exists(source, status)) {
        return errno;
    }
    if (S_ISDIR(status.st_mode) && liesWithin(source, posix::splitPath(destination).folder)) {
        return EINVAL;
    }
    struct stat standing {};
    if (exists(destination, standing)) {
        return EEXIST;
    }
    const std::string staged = posix::stagedSibling(destination);
    int code = S_ISDIR(status.st_mode) ? copyFolder(source, staged) : copyAlone(source, staged, status.st_mode);
    if (code == 0) {
        code = renameUnlocked(staged, destination, plainMove);
    }
    if (code != 0) {
        (void)removeUnlocking(staged);
    }
    return code;
}

int moveWithoutReplacing(const std::string& source, const std::string& destination, PlainMove plainMove) {
    const int code = rename(source, destination, plainMove);
    return code == EXDEV ? moveAcross(source, destination, plainMove) : code;
}

}  // namespace platform::macos
