#include "platform/linux/services/files/FileContents.h"

#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <limits>
#include <string_view>

#include "platform/posix/WriteAll.h"

namespace platform::linux_host {

namespace {

constexpr off_t smallSize = off_t{64} * 1024;
constexpr std::size_t kernelChunk = std::size_t{1} << 30U;

struct Amount {
    off_t limit = 0;     // bytes to copy at most
    off_t expected = 0;  // spares the read that finds the end
};

// From the present positions to the end of the file or of the amount.
int readAndWrite(int from, int to, const Amount& amount) {
    std::array<char, smallSize> buffer;  // NOLINT(cppcoreguidelines-pro-type-member-init)
    for (off_t done = 0; done < amount.limit;) {
        const auto wanted = static_cast<std::size_t>(std::min<off_t>(amount.limit - done, smallSize));
        const ssize_t count = ::read(from, buffer.data(), wanted);
        if (count < 0) {
            if (errno == EINTR) {
                continue;
            }
            return errno;
        }
        if (count == 0) {
            return 0;
        }
        std::string_view bytes(buffer.data(), static_cast<std::size_t>(count));
        if (const int code = posix::writeAll(to, bytes); code != 0) {
            return code;
        }
        done += count;
        if (done == amount.expected) {
            return 0;
        }
    }
    return 0;
}

bool isMatterOfSupport(int code) {
    return code == EXDEV || code == EINVAL || code == ENOSYS || code == EOPNOTSUPP || code == EBADF ||
           code == ETXTBSY || code == EPERM;
}

// `count` bytes from the present positions on; falls back to reading and writing where the kernel cannot copy.
int copyRange(int from, int to, off_t count) {
    while (count > 0) {
        const std::size_t wanted = std::min(static_cast<std::size_t>(count), kernelChunk);
        const ssize_t copied = ::copy_file_range(from, nullptr, to, nullptr, wanted, 0);
        if (copied < 0 && errno == EINTR) {
            continue;
        }
        if (copied < 0 && !isMatterOfSupport(errno)) {
            return errno;
        }
        if (copied <= 0) {
            return readAndWrite(from, to, {.limit = count, .expected = count});
        }
        count -= copied;
    }
    return 0;
}

int copySparse(int from, int to, off_t size) {
    for (off_t at = 0; at < size;) {
        const off_t data = ::lseek(from, at, SEEK_DATA);
        if (data < 0) {
            if (errno == ENXIO) {
                break;  // a hole up to the end
            }
            return errno;
        }
        const off_t hole = ::lseek(from, data, SEEK_HOLE);
        if (hole < 0 || ::lseek(from, data, SEEK_SET) < 0 || ::lseek(to, data, SEEK_SET) < 0) {
            return errno;
        }
        const off_t end = std::min(hole, size);
        if (const int code = copyRange(from, to, end - data); code != 0) {
            return code;
        }
        at = end;
    }
    return ::ftruncate(to, size) == 0 ? 0 : errno;
}

}  // namespace

int copyContents(int from, const struct stat& status, int to) {
    if (status.st_size > 0 && ::ioctl(to, FICLONE, from) == 0) {
        return 0;
    }
    if (status.st_size <= smallSize) {
        return readAndWrite(from, to,
                            {.limit = std::numeric_limits<off_t>::max(),
                             .expected = status.st_size});  // also files that do not know their size
    }
    const bool hasHoles = status.st_blocks * 512 < status.st_size;
    return hasHoles ? copySparse(from, to, status.st_size) : copyRange(from, to, status.st_size);
}

}  // namespace platform::linux_host
