// What the window stands on in the run: the Linux services in the place of the Mac's.
#include "platform/linux/services/LinuxHost.h"
#include "platform/macos/services/MacHost.h"

namespace platform::macos {

const Host& services() { return linux_host::services(); }

}  // namespace platform::macos
