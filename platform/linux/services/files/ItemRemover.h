// Removing items, folders with all that lies in them.
#pragma once

#include <string>

#include "platform/linux/services/files/ItemPlace.h"
#include "platform/ports/Error.h"

namespace platform::linux_host {

// What may be changed on the way.
enum class Removal {
    asPermitted,     // a folder that its owner made read-only keeps its contents, and the removal fails
    openingFolders,  // folders of the caller's own are made writable first
};

// Links are removed, never followed; the tree may be of any depth. Stops at the first item that cannot be removed and
// names it; what was removed before stays removed. Nothing at the path is a failure, and so is a path that ends in "."
// or "..", which would empty a folder that it does not name.
Failure removeTree(const std::string& path, Removal removal);
Failure removeTree(const ItemPlace& item, Removal removal);

// What would stop removeTree with opened folders somewhere in the tree: a locked file or folder, or a folder with
// contents that the caller may neither write nor open up. Empty when nothing was found. A look, not a promise.
Failure findRemovalObstacle(const ItemPlace& item);

}  // namespace platform::linux_host
