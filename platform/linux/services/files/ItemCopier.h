// Copying items, folders with all that lies in them.
#pragma once

#include <string>

#include "platform/linux/services/files/ItemPlace.h"
#include "platform/ports/Error.h"

namespace platform::linux_host {

// As FileManager::copyItem. A file is written without a name and linked when complete; a folder or link, and a file
// where that is not supported, is made under a hidden staged name beside the destination and renamed. A failed copy
// removes what it made; a killed one can leave at most that hidden item.
//
// Sockets, pipes and devices are refused, wherever in a tree they lie. Files with several names become files of their
// own. The copy's creation date is the time of the copy, unless the source carries one as an attribute.
//
// The folder that is to hold the copy is looked up once: whoever swaps a link into the way to it afterwards changes
// nothing.
Failure copyItem(const std::string& source, const std::string& destination);
Failure copyItem(const ItemPlace& source, const ItemPlace& destination);

}  // namespace platform::linux_host
