#pragma once

#include <string_view>

namespace platform::posix {

// Writes from the present position on, whatever signals arrive meanwhile. 0 or an errno; what could not be written is
// left in `bytes`.
int writeAll(int file, std::string_view& bytes);

}  // namespace platform::posix
