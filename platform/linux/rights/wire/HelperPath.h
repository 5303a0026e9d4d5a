// How a command that is to start the helper names it.
#pragma once

namespace platform::rights::wire {

// The keeper puts the helper's path in its place, wherever it stands in the command's arguments.
constexpr const char* helperPath = "@helper@";

}  // namespace platform::rights::wire
