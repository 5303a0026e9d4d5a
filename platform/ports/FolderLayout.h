// How standard folders lie below the root of their domain, the same on every host.
#pragma once

#include "platform/ports/StandardFolders.h"

namespace platform {

// With a leading "/", such as "/Library/Caches"; null for a number that is no kind.
const char* pathInDomain(FolderKind kind);

}  // namespace platform
