// Starting a tool with the helper's rights.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace platform::rights {

struct ToolStart {
    pid_t tool = -1;
    int error = 0;  // an errno: refused, or could not be executed
};

// Starts the tool at the absolute path `command.front()`, nothing being looked up, in a process group of its own:
// nothing to read, what it prints to `output` (-1: nowhere), no other descriptor, the folder "/", default signals.
// Returns once the tool has taken the place of the child.
ToolStart startTool(const std::vector<std::string>& command, int output);

}  // namespace platform::rights
