// A pipe of which neither end is inherited by a tool unless it is handed over.
#pragma once

#include <optional>

#include "platform/posix/Descriptor.h"

namespace platform::posix {

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;
};

// None when no descriptor is left; errno says why. Neither end takes the number of a standard stream, even when the
// process was started without one.
std::optional<Pipe> makePipe();

// The same descriptor under a number above those of the standard streams; none when no number is left.
Descriptor aboveStandardStreams(Descriptor descriptor);

}  // namespace platform::posix
