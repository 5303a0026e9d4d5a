// Standing by while sudo or su start the helper, so that the path they were given leads to nothing else.
#pragma once

#include <string>
#include <vector>

namespace platform::rights {

// Starts the command, with this process's own program as the helper in it, and waits for it to end: the exit code, 128
// and the signal's number, or 127 when it could not be started. For a process that leads its session and has nothing
// else to do; it closes all its descriptors.
//
// A path below /proc holds the number of a process. When the one that asked for the rights ends before sudo has taken
// them into use, the next process of that number could put any program there. This process has the helper as its own
// executable, which nobody can exchange, and its number is the session's, which is given to nobody while sudo is in it.
int keepHelperFor(std::vector<std::string> command);

}  // namespace platform::rights
