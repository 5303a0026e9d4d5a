// Starting a tool.
#pragma once

#include <sys/types.h>

#include <variant>

#include "platform/ports/Processes.h"

namespace platform::posix {

// The descriptors that become the tool's standard streams; -1 lets it have the program's own.
struct StandardStreams {
    int input = -1;
    int output = -1;
    int error = -1;
};

// The number of the new process, which leads a process group of its own, or why the tool cannot be executed. Returns
// once the tool has taken the place of the child.
std::variant<pid_t, Error> spawn(const ProcessOptions& options, const StandardStreams& streams);

}  // namespace platform::posix
