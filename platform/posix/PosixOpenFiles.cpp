#include "platform/posix/PosixOpenFiles.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "platform/posix/Descriptor.h"
#include "platform/posix/FileErrors.h"

namespace platform::posix {

namespace {

// Nothing below waits for the other end of a pipe, takes a terminal over or outlives the execution of a program.
constexpr int alwaysFlags = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;

int codeUnlessRegular(mode_t mode) {
    if (S_ISREG(mode)) {
        return 0;
    }
    return S_ISDIR(mode) ? EISDIR : EOPNOTSUPP;
}

int codeUnlessStream(mode_t mode) { return S_ISREG(mode) || S_ISDIR(mode) || S_ISBLK(mode) ? 0 : EOPNOTSUPP; }

struct OpenedDescriptor {
    Descriptor descriptor;
    int code = 0;
};

// From now on as if opened without O_NONBLOCK.
void letWait(int descriptor, int flags) { (void)::fcntl(descriptor, F_SETFL, flags); }

// Looked at twice: opening a device can do something to it, and what is opened may be another than was looked at.
OpenedDescriptor openChecked(const std::string& path, int flags, int (*refusal)(mode_t)) {
    if (path.find('\0') != std::string::npos) {
        return {.descriptor = {}, .code = EINVAL};
    }
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        return {.descriptor = {}, .code = errno};
    }
    if (const int code = refusal(status.st_mode); code != 0) {
        return {.descriptor = {}, .code = code};
    }
    Descriptor descriptor(::open(path.c_str(), flags | alwaysFlags));
    if (!descriptor || ::fstat(descriptor.get(), &status) != 0) {
        return {.descriptor = {}, .code = errno};
    }
    if (const int code = refusal(status.st_mode); code != 0) {
        return {.descriptor = {}, .code = code};
    }
    // One that says that it is empty may be the kernel's own, with nothing to give for a long time.
    if (status.st_size != 0 || flags != O_RDONLY) {
        letWait(descriptor.get(), flags);
    }
    return {.descriptor = std::move(descriptor), .code = 0};
}

class PosixOpenFile : public OpenFile {
public:
    PosixOpenFile(Descriptor descriptor, std::string path, PosixOpenFiles::CopyAttributes copyAttributes)
        : m_descriptor(std::move(descriptor)), m_path(std::move(path)), m_copyAttributes(copyAttributes) {}

    Transfer read(std::span<std::byte> buffer) override {
        return transferred(::read(m_descriptor.get(), buffer.data(), buffer.size()));
    }
    Transfer write(std::span<const std::byte> bytes) override {
        return transferred(::write(m_descriptor.get(), bytes.data(), bytes.size()));
    }
    int seek(std::uint64_t position) override {
        return ::lseek(m_descriptor.get(), static_cast<off_t>(position), SEEK_SET) < 0 ? errno : 0;
    }
    int truncate() override { return ::ftruncate(m_descriptor.get(), 0) != 0 ? errno : 0; }

    std::optional<std::uint64_t> size() override {
        struct stat status {};
        if (::fstat(m_descriptor.get(), &status) != 0) {
            return std::nullopt;
        }
        return static_cast<std::uint64_t>(status.st_size);
    }
    std::optional<FileIdentity> identity() override {
        struct stat status {};
        if (::fstat(m_descriptor.get(), &status) != 0) {
            return std::nullopt;
        }
        return FileIdentity{.device = static_cast<std::uint64_t>(status.st_dev),
                            .inode = static_cast<std::uint64_t>(status.st_ino)};
    }

    Failure copyAttributesFrom(OpenFile& source) override {
        const auto* const from = dynamic_cast<const PosixOpenFile*>(&source);
        const int code = from != nullptr ? m_copyAttributes(from->m_descriptor.get(), m_descriptor.get()) : EINVAL;
        if (code == 0) {
            return {};
        }
        return fileError("set the attributes of", m_path, code);
    }

    int close() override { return ::close(m_descriptor.release()) != 0 ? errno : 0; }

private:
    static Transfer transferred(ssize_t count) {
        return count < 0 ? Transfer{.bytes = 0, .code = errno}
                         : Transfer{.bytes = static_cast<std::size_t>(count), .code = 0};
    }

    Descriptor m_descriptor;
    const std::string m_path;
    const PosixOpenFiles::CopyAttributes m_copyAttributes;
};

}  // namespace

OpenFiles::Opened PosixOpenFiles::openForReading(const std::string& path) {
    auto [descriptor, code] = openChecked(path, O_RDONLY, codeUnlessRegular);
    if (!descriptor) {
        return {.file = nullptr, .created = false, .code = code};
    }
    return {.file = std::make_unique<PosixOpenFile>(std::move(descriptor), path, m_copyAttributes)};
}

OpenFiles::Opened PosixOpenFiles::openForWriting(const std::string& path) {
    if (path.find('\0') != std::string::npos) {
        return {.file = nullptr, .created = false, .code = EINVAL};
    }
    Descriptor made(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | alwaysFlags, S_IRUSR | S_IWUSR));
    if (made) {
        letWait(made.get(), O_RDWR);
        return {.file = std::make_unique<PosixOpenFile>(std::move(made), path, m_copyAttributes), .created = true};
    }
    if (errno != EEXIST && errno != EISDIR) {
        return {.file = nullptr, .created = false, .code = errno};
    }
    auto [descriptor, code] = openChecked(path, O_RDWR, codeUnlessRegular);
    if (!descriptor) {
        return {.file = nullptr, .created = false, .code = code};
    }
    return {.file = std::make_unique<PosixOpenFile>(std::move(descriptor), path, m_copyAttributes)};
}

std::FILE* PosixOpenFiles::openStream(const std::string& path) {
    auto [descriptor, code] = openChecked(path, O_RDONLY, codeUnlessStream);
    if (!descriptor) {
        errno = code;
        return nullptr;
    }
    std::FILE* const stream = ::fdopen(descriptor.get(), "rb");
    if (stream != nullptr) {
        (void)descriptor.release();  // the stream's now
    }
    return stream;
}

void PosixOpenFiles::closeDescriptor(int number) { (void)::close(number); }

}  // namespace platform::posix
