// Giving an item its final name in one step.
#pragma once

#include <string>

namespace platform::macos {

// Renames within one file system and never replaces what stands at `to`, a dangling link included. 0 or an errno:
// ENOTSUP where the file system cannot do so in one step.
int renameWithoutReplacing(const std::string& from, const std::string& to);

}  // namespace platform::macos
