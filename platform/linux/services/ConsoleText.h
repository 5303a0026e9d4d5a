// Text of any origin as one line that is safe to show on a terminal.
#pragma once

#include <string>
#include <string_view>

namespace platform::linux_host {

// Control characters (C0, C1 and DEL), the line and paragraph separators and the marks that turn the direction of
// writing become escapes such as \n, \x1B and \u202E; bytes that are not UTF-8 become \xFF. Everything else stays,
// backslashes included.
std::string consoleLine(std::string_view text);

}  // namespace platform::linux_host
