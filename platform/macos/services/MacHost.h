// The services of a Mac that need no window.
#pragma once

#include "platform/ports/Host.h"

namespace platform::macos {

// Made at the first call and kept until the process ends. Application and alerts are missing; the main thread is the
// one of the first call, and its work is served by runNextEvent only.
const Host& services();

}  // namespace platform::macos
