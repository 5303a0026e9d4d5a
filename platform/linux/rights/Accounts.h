// The accounts of this machine.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

#include "platform/linux/rights/PasswordPrompt.h"

namespace platform::rights {

// None: there is no such account. A name that could be taken for an option, or is no single line, is nobody's.
std::optional<Administrator> accountNamed(const std::string& name);
std::optional<Administrator> accountOf(uid_t user);

}  // namespace platform::rights
