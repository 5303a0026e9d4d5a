#include "platform/linux/services/files/Staging.h"

#include <fcntl.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>

#include "platform/linux/services/files/PathParts.h"

namespace platform::linux_host {

namespace {

std::uint64_t randomNumber() {
    std::uint64_t number = 0;
    if (::getrandom(&number, sizeof number, GRND_NONBLOCK) == static_cast<ssize_t>(sizeof number)) {
        return number;
    }
    // Early in the machine's life: names need to differ, not to be secret.
    static std::atomic<std::uint64_t> counter{0};
    const auto now = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    return (now << 20U) ^ (static_cast<std::uint64_t>(::getpid()) << 44U) ^ counter.fetch_add(1);
}

int renameByHand(const char* from, const char* to) {
    struct stat status {};
    if (::lstat(from, &status) != 0) {
        return errno;
    }
    if (!S_ISDIR(status.st_mode)) {
        if (::linkat(AT_FDCWD, from, AT_FDCWD, to, 0) == 0) {
            return ::unlink(from) == 0 ? 0 : errno;
        }
        if (errno == EEXIST) {
            return errno;
        }
    }
    struct stat standing {};
    if (::lstat(to, &standing) == 0) {
        return EEXIST;
    }
    return ::rename(from, to) == 0 ? 0 : errno;
}

}  // namespace

std::string stagedName() {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), ".wickfield-%016llx", static_cast<unsigned long long>(randomNumber()));
    return text.data();
}

std::string stagedSibling(const std::string& path) { return joinPath(splitPath(path).folder, stagedName()); }

int renameWithoutReplacing(const std::string& from, const std::string& to) {
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    return errno == EINVAL || errno == ENOSYS ? renameByHand(from.c_str(), to.c_str()) : errno;
}

}  // namespace platform::linux_host
