#pragma once

#include <string>

namespace platform::macos {

// An errno that tells why an item could not be moved to the Trash, by what can be seen of the item, its folder and the
// Trash; EIO when they show no reason. Any thread.
int recycleRefusal(const std::string& folder, const std::string& name, const std::string& trashFolder);

}  // namespace platform::macos
