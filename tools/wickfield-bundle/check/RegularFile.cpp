#include "tools/wickfield-bundle/check/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <system_error>

namespace wickfield_bundle {

std::optional<RegularFile> RegularFile::open(const std::string& path, std::string& whyNot) {
    platform::posix::Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (!file || ::fstat(file.get(), &status) != 0) {
        whyNot = std::generic_category().message(errno);
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode)) {
        whyNot = "not a file";
        return std::nullopt;
    }
    return RegularFile(std::move(file), static_cast<std::uint64_t>(std::max<off_t>(status.st_size, 0)));
}

std::size_t RegularFile::readAt(std::uint64_t offset, std::span<char> room) const {
    std::size_t done = 0;
    while (done < room.size()) {
        if (offset + done > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) {
            break;
        }
        const ssize_t count =
            ::pread(m_descriptor.get(), room.data() + done, room.size() - done, static_cast<off_t>(offset + done));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            break;
        }
        done += static_cast<std::size_t>(count);
    }
    return done;
}

std::string RegularFile::piece(std::uint64_t offset, std::size_t most) const {
    const std::uint64_t left = m_size > offset ? m_size - offset : 0;
    std::string text(static_cast<std::size_t>(std::min<std::uint64_t>(left, most)), '\0');
    text.resize(readAt(offset, text));
    return text;
}

std::string RegularFile::head(std::size_t most) const { return piece(0, most); }

std::string RegularFile::tail(std::size_t most) const { return piece(m_size > most ? m_size - most : 0, most); }

}  // namespace wickfield_bundle
