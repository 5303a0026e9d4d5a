// Where file systems are mounted.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform::linux_host {

// The mount points of file systems that live on this machine, in memory or on a disk of it, out of the text of a
// mountinfo file; mount points within others come before them, so that "/" is the last one.
std::vector<std::string> localMountPoints(std::string_view mountInfo);

// Those of this process.
std::vector<std::string> localMountPoints();

// The topmost folder of the file system, as mounted, that holds the folder; empty when the folder cannot be looked at.
std::string mountPointOf(const std::string& folder);

// Whether a rename between the two folders stays within one mount.
bool areOnSameMount(const std::string& folder, const std::string& other);
bool areOnSameMount(int folder, int other);  // open ones

}  // namespace platform::linux_host
