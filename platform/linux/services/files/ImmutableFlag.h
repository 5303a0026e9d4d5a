// The flag that keeps a file from being changed, renamed or removed, even by its owner.
#pragma once

#include <string>

#include "platform/ports/Error.h"

namespace platform::linux_host {

// As FileManager::setImmutable; one look at the item when the flag stands as wanted. A link is not followed, and has no
// flag. Setting and clearing a flag is a right of the superuser on Linux: EPERM for anybody else.
Failure setImmutableFlag(const std::string& path, bool immutable);

}  // namespace platform::linux_host
