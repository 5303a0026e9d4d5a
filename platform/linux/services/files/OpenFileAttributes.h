// What an open file carries besides its contents, brought to another open file.
#pragma once

namespace platform::linux_host {

// As ItemMetadata.h describes it, for a copy made in any folder or over a file that was there, whose own attributes go
// where the source has none of their name. EPERM, and nothing is changed, when the file is another user's and the
// caller is not the superuser. 0 or an errno.
int copyAttributes(int from, int to);

}  // namespace platform::linux_host
