// Paths on their way to a tool's argument list.
#pragma once

#include <string>

namespace kz {

// The same item under a name that no tool takes for an option. Absolute paths are handed over as they stand.
inline std::string toolArgument(const std::string& path) { return path.starts_with('-') ? "./" + path : path; }

}  // namespace kz
