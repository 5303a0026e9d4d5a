// The services of a Linux host that need no window.
#pragma once

#include <optional>
#include <string>

#include "platform/ports/Host.h"

namespace platform::linux_host {

// Made at the first call and kept until the process ends. Application, alerts and authorization are missing; the main
// thread is the one of the first call, and its work is served by runNextEvent only.
//
// The folder holds ditto, xattr, diskutil and lsof with the command lines that the library uses. None: "tools" beside
// the program when that is there, else "../libexec/wickfield". What the first call says holds.
const Host& services(const std::optional<std::string>& toolsFolder = std::nullopt);

}  // namespace platform::linux_host
