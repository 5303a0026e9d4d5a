// Copying and moving an item.
#pragma once

#include <string>

namespace platform::macos {

// What gives an item its place where the file system cannot rename without replacing: 0 or an errno.
using PlainMove = int (*)(const std::string& from, const std::string& to);

// As FileManager::copyItem, 0 or an errno. Where the file system can, files share their blocks with the original until
// either is written to; a file in a folder then loses its set-id bits.
int copyWithoutReplacing(const std::string& source, const std::string& destination, PlainMove plainMove);

// As FileManager::moveItem, 0 or an errno. To another volume: an item that could not be removed whole (something locked
// or somebody else's folder in it) is found out before anything is copied. What cannot be removed all the same stays
// under a hidden staged name beside the original's place; the copy stays then.
int moveWithoutReplacing(const std::string& source, const std::string& destination, PlainMove plainMove);

}  // namespace platform::macos
