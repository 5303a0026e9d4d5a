// Removing an item with all that lies in it, where the plain call would stop half-way. Links are never followed.
#pragma once

#include <string>

namespace platform::macos {

// Why removeUnlocking could not remove the whole item or should not: EPERM for a locked item anywhere in it, EACCES for
// a folder with contents that the caller may neither write nor open up, or another errno. 0 when nothing was found. A
// look, not a promise.
int removalObstacle(const std::string& path);

// Takes the locks off, makes folders of the caller's own writable, then removes. 0 or an errno; what was removed before
// stays removed.
int removeUnlocking(const std::string& path);

}  // namespace platform::macos
