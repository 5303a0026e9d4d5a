#pragma once

namespace platform::rights {

// Leaves behind what the process inherited from whoever started it: every descriptor but the standard input, the
// environment, the working folder, the file mask, resource limits, signal dispositions and the signal mask.
void cleanProcess();

}  // namespace platform::rights
