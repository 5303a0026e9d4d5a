#pragma once

#include <string>

namespace KZFileManager {

// Moves the item to the user's Trash with the rights of the process; false when it could not, or when there is no
// Trash.
bool recycle(const std::string& path);

}  // namespace KZFileManager
