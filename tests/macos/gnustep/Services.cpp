// What the window stands on in the run: the Linux services in the place of the Mac's, but for exceptions, which come
// from AppKit.
#include "platform/linux/services/LinuxHost.h"
#include "platform/macos/services/MacHost.h"
#include "platform/macos/services/MacUncaughtExceptions.h"

namespace platform::macos {

const Host& services() {
    static const Host host = [] {
        Host made = linux_host::services();
        made.exceptions = new MacUncaughtExceptions;
        return made;
    }();
    return host;
}

}  // namespace platform::macos
