// Names for items that are made beside the place that they are meant for and then get their final name in one step.
#pragma once

#include <string>

namespace platform::posix {

// A hidden name that nobody else uses: ".wickfield-" and 16 random hexadecimal digits.
std::string stagedName();

// The path with its last component replaced by a staged name.
std::string stagedSibling(const std::string& path);

}  // namespace platform::posix
