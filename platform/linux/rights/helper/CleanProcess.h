#pragma once

#include <unistd.h>

namespace platform::rights {

// Leaves behind what the process inherited from whoever started it: every descriptor but the standard input, the
// environment, the working folder, the file mask, resource limits, signal dispositions and the signal mask. What cannot
// be left behind ends the process.
void cleanProcess();

// Closes every descriptor from that number on; one by one where the kernel cannot close a range.
using RangeCloser = int (*)(unsigned first, unsigned last, int flags) noexcept;
void closeDescriptorsFrom(int first, RangeCloser closeRange = ::close_range);

}  // namespace platform::rights
