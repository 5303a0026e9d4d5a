// Waiting, for a limited time, for a child process to end. Nothing here reaps the child.
#pragma once

#include <sys/types.h>

#include <chrono>

#include "platform/posix/Descriptor.h"

namespace platform::posix {

// A descriptor that becomes readable when the child ends, for poll. None where the host has no such thing or no
// descriptor is left; hasEnded answers then too.
Descriptor openExitWatch(pid_t child);

struct ExitState {
    bool ended = false;
    bool bySignal = false;
    bool reapedElsewhere = false;  // ended, but the host no longer says how; the status is -1
    int status = 0;                // exit code, 0 to 255, or number of the signal
};

enum class Blocking { no, yes };

// Whether and how the child ended. The child stays unreaped, so that its number is not given to another process.
ExitState exitState(pid_t child, Blocking blocking);

// Returns when the child has ended or the time has passed. Without a watch it looks at growing intervals, 5 ms at most.
void waitForExit(pid_t child, const Descriptor& watch, std::chrono::milliseconds limit);

// Takes the child that has ended from the host's table; false while it runs.
bool reap(pid_t child);

}  // namespace platform::posix
