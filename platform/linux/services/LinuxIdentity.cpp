#include "platform/linux/services/LinuxIdentity.h"

#include <unistd.h>

#include <cstdlib>

#include "platform/linux/services/Accounts.h"
#include "platform/linux/services/ConsoleUser.h"

namespace platform::linux_host {

unsigned LinuxIdentity::realUserID() { return ::getuid(); }

std::string LinuxIdentity::userName() {
    const auto account = accountOf(::getuid());
    return account ? account->name : std::to_string(::getuid());
}

std::string LinuxIdentity::homeFolder() {
    const char* home = std::getenv("HOME");
    if (::getuid() != 0 && home != nullptr && *home == '/') {
        return home;
    }
    const auto account = accountOf(::getuid());
    return account && !account->home.empty() ? account->home : "/";
}

std::optional<std::string> LinuxIdentity::homeFolderForUser(const std::string& name) {
    const auto account = accountNamed(name);
    return account && !account->home.empty() ? std::optional(account->home) : std::nullopt;
}

std::optional<std::string> LinuxIdentity::consoleUser() { return linux_host::consoleUser(); }

}  // namespace platform::linux_host
