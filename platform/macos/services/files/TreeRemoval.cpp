#include "platform/macos/services/files/TreeRemoval.h"

#include <fts.h>
#include <removefile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>

namespace platform::macos {

namespace {

constexpr unsigned locks = UF_IMMUTABLE | UF_APPEND;
constexpr unsigned superusersLocks = SF_IMMUTABLE | SF_APPEND;

struct CloseTree {
    void operator()(FTS* tree) const { (void)::fts_close(tree); }
};

// Folders are visited before what lies in them. Goes on while `visit` answers 0.
template <typename Visit>
int visitTree(std::string path, const Visit& visit) {
    char* const roots[] = {path.data(), nullptr};
    const std::unique_ptr<FTS, CloseTree> tree(::fts_open(roots, FTS_PHYSICAL | FTS_NOCHDIR, nullptr));
    if (!tree) {
        return errno;
    }
    for (;;) {
        errno = 0;
        FTSENT* const entry = ::fts_read(tree.get());
        if (entry == nullptr) {
            return errno;
        }
        if (entry->fts_info == FTS_NS || entry->fts_info == FTS_DNR || entry->fts_info == FTS_ERR) {
            return entry->fts_errno;
        }
        if (entry->fts_info == FTS_DP) {
            continue;
        }
        if (const int code = visit(*entry); code != 0) {
            return code;
        }
    }
}

bool mayBeEmptied(const char* folder, const struct stat& status) {
    return ::geteuid() == 0 || status.st_uid == ::geteuid() || ::access(folder, W_OK | X_OK) == 0;
}

int lookAt(FTSENT& entry) {
    constexpr long cannotBeEmptied = 1;
    const struct stat& status = *entry.fts_statp;
    if ((status.st_flags & (locks | superusersLocks)) != 0) {
        return EPERM;
    }
    if (S_ISDIR(status.st_mode) && !mayBeEmptied(entry.fts_path, status)) {
        entry.fts_number = cannotBeEmptied;  // which matters only when something lies in it
    }
    return entry.fts_parent->fts_number == cannotBeEmptied ? EACCES : 0;
}

// What cannot be opened up is left as it is: the removal will tell.
int openUp(const FTSENT& entry) {
    const struct stat& status = *entry.fts_statp;
    if ((status.st_flags & locks) != 0) {
        (void)::lchflags(entry.fts_path, status.st_flags & ~locks);
    }
    if (S_ISDIR(status.st_mode) && (status.st_mode & S_IRWXU) != S_IRWXU) {
        (void)::chmod(entry.fts_path, (status.st_mode & 07777U) | S_IRWXU);
    }
    return 0;
}

}  // namespace

int removalObstacle(const std::string& path) { return visitTree(path, lookAt); }

int removeUnlocking(const std::string& path) {
    (void)visitTree(path, openUp);
    return ::removefile(path.c_str(), nullptr, REMOVEFILE_RECURSIVE) == 0 ? 0 : errno;
}

}  // namespace platform::macos
