#include "platform/macos/services/files/FileContents.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "platform/macos/foundation/FileErrors.h"
#include "platform/posix/Descriptor.h"

namespace platform::macos {

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

// Never waits for the other end of a pipe. None for what is no regular file.
posix::Descriptor openRegular(const std::string& path, int flags, std::uint64_t& size) {
    if (path.find('\0') != std::string::npos) {
        return {};
    }
    posix::Descriptor file(::open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return {};
    }
    size = static_cast<std::uint64_t>(status.st_size);
    return file;
}

class MacAppendHandle : public FileManager::AppendHandle {
public:
    MacAppendHandle(posix::Descriptor file, std::string path) : m_file(std::move(file)), m_path(std::move(path)) {}

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

std::optional<std::string> readWholeFile(const std::string& path, std::uint64_t limit) {
    std::uint64_t size = 0;
    const posix::Descriptor file = openRegular(path, O_RDONLY, size);
    if (!file || size > limit) {
        return std::nullopt;
    }
    // One byte more than expected shows that the file has ended, or grown.
    std::string contents(static_cast<std::size_t>(size) + 1, '\0');
    std::size_t filled = 0;
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
    std::uint64_t size = 0;
    posix::Descriptor file = openRegular(path, O_WRONLY | O_APPEND, size);
    if (!file || ::fcntl(file.get(), F_SETFL, O_APPEND) != 0) {
        return nullptr;
    }
    return std::make_unique<MacAppendHandle>(std::move(file), path);
}

}  // namespace platform::macos
