// The account database.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace platform::linux_host {

struct Account {
    uid_t uid = 0;
    std::string name;
    std::string home;
};

// None when there is no such account or the database cannot be read.
std::optional<Account> accountOf(uid_t uid);
std::optional<Account> accountNamed(const std::string& name);

}  // namespace platform::linux_host
