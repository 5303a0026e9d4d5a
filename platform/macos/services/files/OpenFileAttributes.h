#pragma once

namespace platform::macos {

// Gives the open file `to` the mode, times, flags, extended attributes and access list of `from`, the owner too for the
// superuser; 0 or an errno. For whoever owns `to` and for the superuser.
int copyAttributes(int from, int to);

}  // namespace platform::macos
