#include "platform/posix/WriteAll.h"

#include <unistd.h>

#include <cerrno>
#include <cstddef>

namespace platform::posix {

int writeAll(int file, std::string_view& bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written > 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
        } else if (written == 0 || errno != EINTR) {
            return written == 0 ? EIO : errno;
        }
    }
    return 0;
}

}  // namespace platform::posix
