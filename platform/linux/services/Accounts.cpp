#include "platform/linux/services/Accounts.h"

#include <pwd.h>

#include <cerrno>
#include <vector>

namespace platform::linux_host {

namespace {

// Calls `look(entry, buffer, size, result)` with a buffer that is large enough.
template <typename Look>
std::optional<Account> lookUp(Look look) {
    constexpr std::size_t firstSize = 1024;
    constexpr std::size_t largestSize = std::size_t{1} << 24U;
    for (std::vector<char> buffer(firstSize); buffer.size() <= largestSize; buffer.resize(buffer.size() * 4)) {
        passwd entry{};
        passwd* found = nullptr;
        const int error = look(&entry, buffer.data(), buffer.size(), &found);
        if (found != nullptr) {
            return Account{found->pw_uid, found->pw_name, found->pw_dir == nullptr ? "" : found->pw_dir};
        }
        if (error != ERANGE) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

}  // namespace

std::optional<Account> accountOf(uid_t uid) {
    return lookUp([uid](passwd* entry, char* buffer, std::size_t size, passwd** found) {
        return ::getpwuid_r(uid, entry, buffer, size, found);
    });
}

std::optional<Account> accountNamed(const std::string& name) {
    return lookUp([&name](passwd* entry, char* buffer, std::size_t size, passwd** found) {
        return ::getpwnam_r(name.c_str(), entry, buffer, size, found);
    });
}

}  // namespace platform::linux_host
