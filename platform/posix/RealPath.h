#pragma once

#include <string>

namespace platform::posix {

// The path from the root with every link followed; empty when it leads nowhere or may not be followed.
std::string realPath(const std::string& path);

}  // namespace platform::posix
