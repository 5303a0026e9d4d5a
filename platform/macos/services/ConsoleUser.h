#pragma once

#include <optional>
#include <string>

namespace platform::macos {

// The name by the dynamic store: "loginwindow" at a login screen; none when nobody owns the console. Any thread.
std::optional<std::string> consoleUser();

}  // namespace platform::macos
