#include "platform/posix/StagedName.h"

#include <sys/random.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>

#include "platform/posix/PathParts.h"

namespace platform::posix {

namespace {

std::uint64_t randomNumber() {
    std::uint64_t number = 0;
    if (::getentropy(&number, sizeof number) == 0) {
        return number;
    }
    // A kernel that refuses: names need to differ, not to be secret.
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

}  // namespace platform::posix
