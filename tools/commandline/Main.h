// The frame around the commands.
#pragma once

#include "tools/commandline/Command.h"

namespace commandline {

// For the first line of main(), before anything is opened and before any thread is started. The program is kept.
void prepare(const Program& program);

// Runs the command that the words ask for and ends the process, which is 1 for whatever a command throws but 2 for a
// UsageError. Threads may still be at work then; nothing that they use is destroyed under them.
[[noreturn]] void runAndExit(const Program& program, int count, char** words);

}  // namespace commandline
