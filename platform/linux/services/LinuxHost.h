// The services of a Linux host that need no window.
#pragma once

#include "platform/ports/Host.h"

namespace platform::linux_host {

// Made at the first call and kept until the process ends. Application, alerts and authorization are missing; the main
// thread is the one of the first call, and its work is served by runNextEvent only.
const Host& services();

}  // namespace platform::linux_host
