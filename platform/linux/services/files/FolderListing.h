// The entries of an open folder.
#pragma once

#include <functional>
#include <vector>

#include "platform/ports/FileManager.h"

namespace platform::linux_host {

// Every entry but "." and ".." in the order in which the file system lists them, with the type where it comes for free
// or along with the size. 0 or an errno; what was visited before stays visited.
int visitFolder(int folder, VisitSizes sizes, const std::function<void(const VisitedEntry&)>& visit);

// Appends the same entries, without their sizes. 0 or an errno.
int listFolder(int folder, std::vector<DirectoryEntry>& entries);

}  // namespace platform::linux_host
