#pragma once

#include <string>

namespace kzfile {

// Moves the item of that name to the Trash. What is wrong, in words; "" when it lies there.
std::string trashItem(const std::string& name);

}  // namespace kzfile
