// Names from anywhere, fit to be shown.
#pragma once

#include <string>
#include <string_view>

namespace platform::linux_host {

// The text with what a terminal would obey instead of showing it, control characters and bytes that are no UTF-8,
// written as "\x1b".
std::string printableText(std::string_view text);

}  // namespace platform::linux_host
