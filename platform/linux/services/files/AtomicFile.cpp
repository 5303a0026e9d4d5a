#include "platform/linux/services/files/AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <utility>

#include "platform/linux/services/files/FileErrors.h"
#include "platform/linux/services/files/PathParts.h"
#include "platform/linux/services/files/Staging.h"
#include "platform/posix/Descriptor.h"

namespace platform::linux_host {

namespace {

// What could not be written is left in `bytes`.
int writeAll(int file, std::string_view& bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR) {
            return errno;
        }
        bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    return 0;
}

// Where a link leads, when it leads to a file.
std::string behindLinks(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr), &std::free);
    return real ? std::string(real.get()) : path;
}

int takeOverAttributes(int file, const struct stat& replaced) {
    if ((replaced.st_uid != ::geteuid() || replaced.st_gid != ::getegid()) &&
        ::fchown(file, replaced.st_uid, replaced.st_gid) != 0 && errno != EPERM) {
        return errno;
    }
    return ::fchmod(file, replaced.st_mode & 0777U) == 0 ? 0 : errno;
}

class LinuxAppendHandle : public FileManager::AppendHandle {
public:
    LinuxAppendHandle(posix::Descriptor file, std::string path) : m_file(std::move(file)), m_path(std::move(path)) {}

    Failure append(std::string_view bytes) override {
        const std::string withBreak = m_cutShort ? "\n" + std::string(bytes) : std::string();
        const std::string_view piece = m_cutShort ? withBreak : bytes;
        std::string_view left = piece;
        const int code = writeAll(m_file.get(), left);
        if (left.size() < piece.size()) {
            m_cutShort = code != 0 && !piece.substr(0, piece.size() - left.size()).ends_with('\n');
        }
        return code == 0 ? Failure{} : fileError("write", m_path, code);
    }

private:
    posix::Descriptor m_file;
    std::string m_path;
    bool m_cutShort = false;  // the file ends within a line that could not be finished
};

}  // namespace

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
    posix::Descriptor file(::open(staged.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
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

std::optional<std::string> readWholeFile(const std::string& path, std::uint64_t limit) {
    const posix::Descriptor file(::open(systemPath(path), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
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

std::unique_ptr<FileManager::AppendHandle> openAppendHandle(const std::string& path) {
    posix::Descriptor file(::open(systemPath(path), O_WRONLY | O_APPEND | O_NONBLOCK | O_CLOEXEC));
    if (!file || ::fcntl(file.get(), F_SETFL, O_APPEND) != 0) {
        return nullptr;
    }
    return std::make_unique<LinuxAppendHandle>(std::move(file), path);
}

}  // namespace platform::linux_host
