#include "platform/linux/rights/Accounts.h"

#include <pwd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>
#include <vector>

namespace platform::rights {

namespace {

// The first field of what is noted about the account; "&" in it stands for the account's name with a capital letter.
std::string realNameOf(const passwd& entry) {
    const std::string_view noted = entry.pw_gecos != nullptr ? entry.pw_gecos : "";
    std::string name;
    for (const char c : noted.substr(0, noted.find(','))) {
        if (c != '&') {
            name += c;
            continue;
        }
        const std::size_t begin = name.size();
        name += entry.pw_name;
        if (name[begin] >= 'a' && name[begin] <= 'z') {
            name[begin] = static_cast<char>(name[begin] - 'a' + 'A');
        }
    }
    return name;
}

// Calls look(entry, room, size, found), with more room until the entry fits.
template <class Look>
std::optional<Administrator> found(Look look) {
    constexpr std::size_t usual = 1024;
    constexpr std::size_t most = std::size_t{1} << 20U;
    passwd entry{};
    passwd* result = nullptr;
    std::vector<char> room(usual);
    while (look(&entry, room.data(), room.size(), &result) == ERANGE && room.size() < most) {
        room.resize(room.size() * 2);
    }
    return result != nullptr ? std::optional(Administrator{.user = entry.pw_name, .realName = realNameOf(entry)})
                             : std::nullopt;
}

bool isPossibleName(std::string_view name) {
    return !name.empty() && !name.starts_with('-') && name.find_first_of({"\0\n", 2}) == std::string_view::npos;
}

}  // namespace

std::optional<Administrator> accountNamed(const std::string& name) {
    return isPossibleName(name) ? found([&](passwd* entry, char* room, std::size_t size, passwd** result) {
        return ::getpwnam_r(name.c_str(), entry, room, size, result);
    })
                                : std::nullopt;
}

std::optional<Administrator> accountOf(uid_t user) {
    return found([&](passwd* entry, char* room, std::size_t size, passwd** result) {
        return ::getpwuid_r(user, entry, room, size, result);
    });
}

}  // namespace platform::rights
