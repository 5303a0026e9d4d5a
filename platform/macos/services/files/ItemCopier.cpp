#include "platform/macos/services/files/ItemCopier.h"

#include <copyfile.h>
#include <removefile.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>

#include "platform/macos/services/files/Staging.h"
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

void removeCopy(const std::string& path) { (void)::removefile(path.c_str(), nullptr, REMOVEFILE_RECURSIVE); }

// A folder's path with a "/" at its end would stand for what lies in it.
int copyTo(const std::string& staged, const std::string& source, bool isFolder) {
    constexpr copyfile_flags_t alone = COPYFILE_ALL | COPYFILE_NOFOLLOW | COPYFILE_CLONE;
    const copyfile_flags_t how = isFolder ? alone | COPYFILE_RECURSIVE : alone;
    const std::string item = isFolder ? source.substr(0, source.find_last_not_of('/') + 1) : source;
    return ::copyfile(item.empty() ? "/" : item.c_str(), staged.c_str(), nullptr, how) == 0 ? 0 : errno;
}

int rename(const std::string& from, const std::string& to, PlainMove plainMove) {
    const int code = renameWithoutReplacing(from, to);
    return code == ENOTSUP ? plainMove(from, to) : code;
}

// An item that is locked keeps its name: it is unlocked for the moment of the rename.
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
    (void)::lchflags(code == 0 ? to.c_str() : from.c_str(), flags);
    return code;
}

int moveAcross(const std::string& source, const std::string& destination, PlainMove plainMove) {
    const int code = copyWithoutReplacing(source, destination, plainMove);
    if (code != 0) {
        return code;
    }
    // The original goes in one step, too, before its parts go: what cannot be renamed could not be removed.
    const std::string leaving = posix::stagedSibling(source);
    if (const int refused = renameWithoutReplacing(source, leaving); refused != 0) {
        removeCopy(destination);
        return refused;
    }
    return ::removefile(leaving.c_str(), nullptr, REMOVEFILE_RECURSIVE) == 0 ? 0 : errno;
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
    int code = copyTo(staged, source, S_ISDIR(status.st_mode));
    if (code == 0) {
        code = renameUnlocked(staged, destination, plainMove);
    }
    if (code != 0) {
        removeCopy(staged);
    }
    return code;
}

int moveWithoutReplacing(const std::string& source, const std::string& destination, PlainMove plainMove) {
    const int code = rename(source, destination, plainMove);
    return code == EXDEV ? moveAcross(source, destination, plainMove) : code;
}

}  // namespace platform::macos
