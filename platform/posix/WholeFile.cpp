#include "platform/posix/WholeFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>

#include "platform/posix/Descriptor.h"
#include "platform/posix/FileErrors.h"
#include "platform/posix/PathParts.h"
#include "platform/posix/RealPath.h"
#include "platform/posix/StagedName.h"
#include "platform/posix/WriteAll.h"

namespace platform::posix {

namespace {

// Where a link leads, when it leads to a file.
std::string behindLinks(const std::string& path) {
    std::string real = realPath(path);
    return real.empty() ? path : real;
}

int takeOverAttributes(int file, const struct stat& replaced) {
    struct stat made {};
    if (::fstat(file, &made) != 0) {
        return errno;
    }
    // Its group may be that of the folder instead of the process.
    if ((made.st_uid != replaced.st_uid || made.st_gid != replaced.st_gid) &&
        ::fchown(file, replaced.st_uid, replaced.st_gid) != 0 && errno != EPERM) {
        return errno;
    }
    return ::fchmod(file, replaced.st_mode & 0777U) == 0 ? 0 : errno;
}

}  // namespace

std::optional<std::string> readWholeFile(const std::string& path, std::uint64_t limit) {
    const Descriptor file(::open(systemPath(path), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return std::nullopt;
    }
    const auto size = static_cast<std::uint64_t>(status.st_size);
    if (size > limit) {
        return std::nullopt;
    }
    // One byte more than expected shows that the file has ended, or grown.
    std::string contents;
    std::size_t filled = 0;
    contents.resize(static_cast<std::size_t>(size) + 1);
    for (;;) {
        const ssize_t count = ::read(file.get(), contents.data() + filled, contents.size() - filled);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count < 0) {
            return std::nullopt;
        }
        if (count == 0) {
            contents.resize(filled);
            return contents;
        }
        filled += static_cast<std::size_t>(count);
        if (filled > limit) {
            return std::nullopt;
        }
        if (filled == contents.size()) {
            contents.resize(filled + std::max<std::size_t>(filled, 4096));
        }
    }
}

Failure replaceFile(const std::string& path, std::string_view contents) {
    if (Failure refused = refusedPath("write", path)) {
        return refused;
    }
    struct stat replaced {};
    const bool exists = ::stat(path.c_str(), &replaced) == 0;
    if (exists && !S_ISREG(replaced.st_mode)) {
        return fileError("write", path, S_ISDIR(replaced.st_mode) ? EISDIR : EOPNOTSUPP);
    }
    const std::string target = exists ? behindLinks(path) : path;
    const std::string staged = stagedSibling(target);
    const mode_t mode = exists ? 0600 : 0666;  // nobody reads more of it than of the file that it replaces
    Descriptor file(::open(staged.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    if (!file) {
        return fileError("write", path, errno);
    }
    std::string_view left = contents;
    int code = writeAll(file.get(), left);
    if (code == 0 && exists) {
        code = takeOverAttributes(file.get(), replaced);
    }
    if (::close(file.release()) != 0 && code == 0) {
        code = errno;
    }
    if (code == 0 && ::rename(staged.c_str(), target.c_str()) != 0) {
        code = errno;
    }
    if (code != 0) {
        (void)::unlink(staged.c_str());
        return fileError("write", path, code);
    }
    return {};
}

}  // namespace platform::posix
