#include "platform/linux/tools/archive/FileBytes.h"

#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "platform/linux/tools/archive/ToolFailure.h"

namespace platform::linux_host {

namespace {

std::string meaningOf(int code) { return std::generic_category().message(code); }

template <typename Write>
void writePieces(std::string_view bytes, const Write& write) {
    while (!bytes.empty()) {
        const ssize_t written = write(bytes);
        if (written < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw ToolFailure("cannot write: " + meaningOf(errno));
        }
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace

void failWithErrno(const std::string& doing, const std::string& item, int code) {
    throw ToolFailure(doing + " “" + item + "”: " + meaningOf(code));
}

std::size_t readAt(int file, std::uint64_t offset, char* buffer, std::size_t count) {
    std::size_t done = 0;
    while (done < count) {
        const ssize_t got = ::pread(file, buffer + done, count - done, static_cast<off_t>(offset + done));
        if (got < 0) {
            if (errno == EINTR) {
                continue;
            }
            throw ToolFailure("cannot read: " + meaningOf(errno));
        }
        if (got == 0) {
            break;
        }
        done += static_cast<std::size_t>(got);
    }
    return done;
}

std::string readAt(int file, std::uint64_t offset, std::size_t count) {
    std::string bytes(count, '\0');
    bytes.resize(readAt(file, offset, bytes.data(), count));
    return bytes;
}

void writeAll(int file, std::string_view bytes) {
    writePieces(bytes, [&](std::string_view piece) { return ::write(file, piece.data(), piece.size()); });
}

void writeAllAt(int file, std::uint64_t offset, std::string_view bytes) {
    writePieces(bytes, [&](std::string_view piece) {
        const ssize_t written = ::pwrite(file, piece.data(), piece.size(), static_cast<off_t>(offset));
        offset += written > 0 ? static_cast<std::uint64_t>(written) : 0;
        return written;
    });
}

}  // namespace platform::linux_host
