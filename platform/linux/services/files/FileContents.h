// The bytes of one open file, brought into another.
#pragma once

#include <sys/stat.h>

namespace platform::linux_host {

// Shares the blocks where the file system can, else lets the kernel copy, else reads and writes; holes stay holes.
// `to` is empty and positioned at its start. 0 or an errno.
int copyContents(int from, const struct stat& status, int to);

}  // namespace platform::linux_host
