// Moving items, across file systems too.
#pragma once

#include <string>

#include "platform/linux/services/files/ItemPlace.h"
#include "platform/ports/Error.h"

namespace platform::linux_host {

// As FileManager::moveItem. Within one file system a single rename; a read-only folder of the caller's own is writable
// for that moment. Across file systems the item is copied, then the original is removed: a folder is first renamed to a
// hidden staged name beside it. Until that step every failure leaves the original whole and takes the copy back;
// afterwards the copy stays, and the failure says where the rest of the original is. A folder that could not be removed
// whole (somebody else's folder or a locked file in it) is found out before anything is copied.
Failure moveItem(const std::string& source, const std::string& destination);
Failure moveItem(const ItemPlace& source, const ItemPlace& destination);

}  // namespace platform::linux_host
