// Who sits at the machine.
#pragma once

#include <optional>
#include <string>

namespace platform::linux_host {

// The user of the active session of the first seat; "loginwindow" while a login or lock screen is there. With nobody on
// that seat, the user of an active session on another one. For a process that was given the superuser's rights outside
// of any such session, the user who asked for them (sudo, pkexec). None when nobody can be told, as on a machine
// without a login manager.
std::optional<std::string> consoleUser();

}  // namespace platform::linux_host
