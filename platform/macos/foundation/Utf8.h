#pragma once

#include <string>

namespace platform::macos {

// The text with each byte that belongs to no well-formed UTF-8 sequence replaced by U+FFFD.
std::string repairedUtf8(const std::string& text);

}  // namespace platform::macos
