// The entries of an open folder.
#pragma once

#include <vector>

#include "platform/ports/FileManager.h"

namespace platform::linux_host {

// Appends every entry but "." and ".." in the order in which the file system lists them, with the type where it comes
// for free. 0 or an errno.
int listFolder(int folder, std::vector<DirectoryEntry>& entries);

}  // namespace platform::linux_host
