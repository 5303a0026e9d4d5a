#pragma once

#include <optional>
#include <string>

namespace platform::macos {

// Sends the Finder one event without a reply that names the item, or no item in particular. The status of the first
// call that failed, 0 when the event is on its way. Any thread.
int sendFinderUpdate(const std::optional<std::string>& path);

}  // namespace platform::macos
