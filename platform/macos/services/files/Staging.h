// Making an item under a name of its own, beside the place that it is meant for, and giving it its final name in one
// step.
#pragma once

#include <string>

namespace platform::macos {

// The folder that the item lies in: "." for a bare name.
std::string folderOf(const std::string& path);

// A hidden sibling that nobody else uses: ".wickfield-" and 16 random hexadecimal digits.
std::string stagedSibling(const std::string& path);

// Renames within one file system and never replaces what stands at `to`, a dangling link included. 0 or an errno:
// ENOTSUP where the file system cannot do so in one step.
int renameWithoutReplacing(const std::string& from, const std::string& to);

}  // namespace platform::macos
