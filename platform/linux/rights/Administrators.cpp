#include "platform/linux/rights/Administrators.h"

#include <grp.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <iterator>
#include <optional>
#include <string_view>

#include "platform/linux/rights/Accounts.h"

namespace platform::rights {

namespace {

constexpr std::string_view userPrefix = "unix-user:";
constexpr std::string_view groupPrefix = "unix-group:";

std::optional<unsigned> numberIn(std::string_view text) {
    unsigned number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc{} && end == text.data() + text.size() ? std::optional(number) : std::nullopt;
}

std::optional<Administrator> accountFor(const std::string& nameOrNumber) {
    auto account = accountNamed(nameOrNumber);
    const auto uid = numberIn(nameOrNumber);
    return !account && uid ? accountOf(*uid) : account;
}

int lookUp(const std::string& nameOrNumber, ::group& entry, std::vector<char>& room, ::group*& found) {
    const int error = ::getgrnam_r(nameOrNumber.c_str(), &entry, room.data(), room.size(), &found);
    const auto gid = numberIn(nameOrNumber);
    return found == nullptr && error != ERANGE && gid ? ::getgrgid_r(*gid, &entry, room.data(), room.size(), &found)
                                                      : error;
}

std::vector<std::string> membersOf(const std::string& group) {
    constexpr std::size_t usual = 1024;
    constexpr std::size_t most = std::size_t{1} << 24U;
    ::group entry{};
    ::group* found = nullptr;
    std::vector<char> room(usual);
    while (lookUp(group, entry, room, found) == ERANGE && room.size() < most) {
        room.resize(room.size() * 2);
    }
    std::vector<std::string> members;
    for (char** member = found != nullptr ? found->gr_mem : nullptr; member != nullptr && *member != nullptr;
         ++member) {
        members.emplace_back(*member);
    }
    return members;
}

}  // namespace

std::vector<Administrator> administratorsFrom(const std::vector<std::string>& identities, uid_t presentUser) {
    std::vector<std::string> names;
    for (const std::string& identity : identities) {
        if (identity.starts_with(userPrefix)) {
            names.push_back(identity.substr(userPrefix.size()));
        } else if (identity.starts_with(groupPrefix)) {
            std::ranges::move(membersOf(identity.substr(groupPrefix.size())), std::back_inserter(names));
        }
    }
    std::vector<Administrator> administrators;
    for (const std::string& name : names) {
        auto account = accountFor(name);
        if (account && std::ranges::find(administrators, account->user, &Administrator::user) == administrators.end()) {
            administrators.push_back(std::move(*account));
        }
    }
    const auto root = accountOf(0);
    if (administrators.size() > 1 && root) {
        std::erase_if(administrators, [&](const Administrator& each) { return each.user == root->user; });
    }
    if (const auto present = accountOf(presentUser)) {
        std::stable_partition(administrators.begin(), administrators.end(),
                              [&](const Administrator& each) { return each.user == present->user; });
    }
    return administrators;
}

}  // namespace platform::rights
