#pragma once

namespace platform::macos {

// Main thread. Lets whatever loop waits for an event look whether it is to go on: only an event makes it look.
void wakeEventLoop();

}  // namespace platform::macos
