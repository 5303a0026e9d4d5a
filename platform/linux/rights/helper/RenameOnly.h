// A process that may rename items, and change nothing in any other way.
#pragma once

namespace platform::rights {

// Whether this machine has the means to hold a process to that. Asked for once.
bool canBeHeldToRenaming();

// From now on every call by which the calling process, and what it executes, would make, write or remove an item, or
// change its attributes, fails with EPERM. For good; for use between vfork and exec, by a process that can get no more
// rights. 0 or an errno.
//
// For tools that are asked, not forced: one that is misled does harm by the calls it always makes.
int holdToRenaming() noexcept;

}  // namespace platform::rights
