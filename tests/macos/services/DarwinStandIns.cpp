// Darwin's calls by those of Linux, as far as the services' own work on top of them is to be run there.
#include <copyfile.h>
#include <fcntl.h>
#include <ftw.h>
#include <removefile.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "platform/macos/services/ConsoleUser.h"
#include "platform/posix/ArgumentPointers.h"

namespace {

int result(const std::error_code& error) {
    errno = error.value();
    return error ? -1 : 0;
}

bool isLocked(const struct stat& status) { return (status.st_flags & UF_IMMUTABLE) != 0; }

int removeOne(const char* path, const struct stat* status, int /*type*/, FTW* /*place*/) {
    if (isLocked(*status)) {
        errno = EPERM;
        return -1;
    }
    return ::remove(path);
}

int copyByTool(const char* from, const char* to) {
    const std::vector<std::string> command{"cp", "-a", "--", from, to};
    pid_t tool = -1;
    int status = 0;
    const bool copied =
        ::posix_spawnp(&tool, "cp", nullptr, nullptr, platform::posix::pointersTo(command).data(), environ) == 0 &&
        ::waitpid(tool, &status, 0) == tool && status == 0;
    return copied ? 0 : EIO;
}

std::error_code spoilClone(const std::filesystem::path& copy) {
    namespace fs = std::filesystem;
    std::error_code error;
    if (!fs::is_directory(fs::symlink_status(copy))) {
        if (fs::is_regular_file(fs::symlink_status(copy))) {
            fs::permissions(copy, fs::perms::set_uid | fs::perms::set_gid, fs::perm_options::remove, error);
        }
        return error;
    }
    for (const auto& entry : fs::recursive_directory_iterator(copy)) {
        const bool isReadOnly = (entry.symlink_status().permissions() & fs::perms::owner_write) == fs::perms::none;
        if (entry.is_directory() && !entry.is_symlink() && isReadOnly) {
            return std::make_error_code(std::errc::permission_denied);
        }
    }
    return error;
}

}  // namespace

extern "C" {

int lchflags(const char* path, uint32_t flags) { return ::chmod(path, flags & 07777U); }

int renamex_np(const char* from, const char* to, unsigned /*flags*/) {
    struct stat status {};
    if (::lstat(from, &status) == 0 && isLocked(status)) {
        errno = EPERM;
        return -1;
    }
    return ::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE);
}

// A clone has no set-id bits, and one of a folder ends at a read-only folder in it.
int copyfile(const char* from, const char* to, copyfile_state_t /*state*/, copyfile_flags_t flags) {
    if (const int code = copyByTool(from, to); code != 0) {
        errno = code;
        return -1;
    }
    std::error_code error;
    if ((flags & COPYFILE_CLONE) != 0) {
        error = spoilClone(to);
    }
    return result(error);
}

// As for an ordinary user: what is locked stays, and what was removed before it is gone.
int removefile(const char* path, removefile_state_t /*state*/, removefile_flags_t /*flags*/) {
    return ::nftw(path, removeOne, 16, FTW_DEPTH | FTW_PHYS) == 0 ? 0 : -1;
}

}  // extern "C"

namespace platform::macos {

std::optional<std::string> consoleUser() { return std::nullopt; }

}  // namespace platform::macos
