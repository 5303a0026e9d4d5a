// The accounts that polkit means when it names administrators.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "platform/linux/rights/PasswordPrompt.h"

namespace platform::rights {

// From identities in polkit's own notation, "unix-user:NAME" and "unix-group:NAME" (or a number instead of the name).
// A group stands for its members. Each account appears once, the present user first, then in the order given; root
// only when there is nobody else. What this machine does not know is left out.
std::vector<Administrator> administratorsFrom(const std::vector<std::string>& identities, uid_t presentUser);

}  // namespace platform::rights
