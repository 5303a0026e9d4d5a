// Signals that ask the tool to end, turned into a failure at the next step, so that what is half-made is removed.
#pragma once

#include "platform/linux/tools/archive/ToolFailure.h"

namespace platform::linux_host {

class Interrupted : public ToolFailure {
public:
    Interrupted() : ToolFailure("interrupted") {}
};

// SIGHUP, SIGINT, SIGTERM and SIGPIPE are noted from now on instead of ending the process; one that is ignored stays
// so.
void noteInterruptions();

// As if the signal had come, for a program that notices signals in its own way. Any thread.
void noteInterruption(int number);

// Throws Interrupted when one has come. Any thread.
void checkInterruption();

// Ends the process by the signal that has come, as a caller expects of an interrupted tool; returns when none has.
void endByNotedSignal();

}  // namespace platform::linux_host
