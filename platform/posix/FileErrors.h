// Phrases for people about what could not be done with a file.
#pragma once

#include <string>
#include <string_view>

#include "platform/ports/Error.h"

namespace platform::posix {

// What an errno means; in English where the C library lets one ask for it.
std::string meaningOf(int code);

// "Cannot <doing> “<path>”: <what the number means>", without a full stop; `code` is an errno.
Error fileError(std::string_view doing, const std::string& path, int code);

// The same for an operation on two items: "Cannot <doing> “<path>” to “<destination>”: …".
Error fileError(std::string_view doing, const std::string& path, const std::string& destination, int code);

// What makes a path unusable whatever lies on the disk: it is empty or holds a NUL, behind which the rest would be
// ignored. Empty for any other path.
Failure refusedPath(std::string_view doing, const std::string& path);

}  // namespace platform::posix
