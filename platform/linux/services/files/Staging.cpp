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

}  // namespace

std::string stagedName() {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), ".wickfield-%016llx", static_cast<unsigned long long>(randomNumber()));
    return text.data();
}

std::string stagedSibling(const std::string& path) { return joinPath(splitPath(path).folder, stagedName()); }

ItemPlace stagedSibling(const ItemPlace& place) {
    const std::string staged = stagedName();
    return {.folder = place.folder,
            .name = joinPath(splitPath(place.name).folder, staged),
            .shown = joinPath(splitPath(place.shown).folder, staged)};
}

int renameWithoutReplacing(const ItemPlace& from, const ItemPlace& to) {
    if (::renameat2(from.folder, from.name.c_str(), to.folder, to.name.c_str(), RENAME_NOREPLACE) == 0) {
        return 0;
    }
    return errno == EINVAL || errno == ENOSYS ? renameInTwoSteps(from, to) : errno;
}

int renameInTwoSteps(const ItemPlace& from, const ItemPlace& to) {
    struct stat status {};
    if (::fstatat(from.folder, from.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
        return errno;
    }
    if (!S_ISDIR(status.st_mode)) {
        if (::linkat(from.folder, from.name.c_str(), to.folder, to.name.c_str(), 0) == 0) {
            if (::unlinkat(from.folder, from.name.c_str(), 0) == 0) {
                return 0;
            }
            const int code = errno;
            (void)::unlinkat(to.folder, to.name.c_str(), 0);
            return code;
        }
        if (errno == EEXIST) {
            return errno;
        }
    }
    struct stat standing {};
    if (::fstatat(to.folder, to.name.c_str(), &standing, AT_SYMLINK_NOFOLLOW) == 0) {
        return EEXIST;
    }
    return ::renameat(from.folder, from.name.c_str(), to.folder, to.name.c_str()) == 0 ? 0 : errno;
}

}  // namespace platform::linux_host
