// Making an item under a name of its own, beside the place that it is meant for, and giving it its final name in one
// step.
#pragma once

#include <string>

namespace platform::linux_host {

// A hidden name that nobody else uses: ".wickfield-" and 16 random hexadecimal digits.
std::string stagedName();

// `path` with its last component replaced by a staged name.
std::string stagedSibling(const std::string& path);

// Renames within one file system and never replaces what stands at `to`, a dangling link included. 0 or an errno. On a
// file system that cannot do so in one step, a file is linked and unlinked; for a folder what stands at `to` is looked
// for first.
int renameWithoutReplacing(const std::string& from, const std::string& to);

}  // namespace platform::linux_host
