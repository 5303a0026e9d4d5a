// Who sits at the machine.
#pragma once

#include <optional>
#include <string>

namespace platform::linux_host {

// The user of the active session of the first seat. With nobody on that seat, not even a login screen, the user of an
// active session on another one.
//
// While nobody sits there, for a process that was given the superuser's rights the user who asked for them (sudo,
// pkexec): somebody who came in over the network works for himself, whether the screen shows a greeter or there is no
// screen. Otherwise "loginwindow" while a login or lock screen is there; none when nobody can be told, as on a machine
// without a login manager.
std::optional<std::string> consoleUser();

}  // namespace platform::linux_host
