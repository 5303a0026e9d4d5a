// Moving items, across file systems too.
#pragma once

#include <string>

#include "platform/ports/Error.h"

namespace platform::linux_host {

// As FileManager::moveItem. Within one file system a single rename. Across file systems the item is copied, then the
// original is taken from its place under a hidden staged name beside it and removed there; until that rename every
// failure leaves the original whole and takes the copy back. An original that could not be removed (a folder of
// somebody else's in it, a locked file) is found out before anything is removed.
Failure moveItem(const std::string& source, const std::string& destination);

}  // namespace platform::linux_host
