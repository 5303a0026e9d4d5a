// Signals that ask the process to end, turned into a call.
#pragma once

#include <functional>

namespace platform::macos {

// SIGTERM, SIGINT and SIGHUP from here on until the process ends; one that was ignored when the program started stays
// ignored. The second of a kind ends the process at once, should the first have found it hanging. `asked` runs on a
// thread of its own. Without the pipe or the thread that it takes, the signals keep what they do by default. Once in a
// process.
void watchSignals(std::function<void()> asked);

}  // namespace platform::macos
