// What the process may do with an item that is there.
#pragma once

#include <string>

namespace wickfield_bundle {

enum class Right {
    granted,
    administrators,  // not this user's, but an administrator's
    locked,          // nobody's until the locked flag is cleared
    readOnly,        // nobody's: the file system is read-only
};

Right rightToChange(const std::string& path);  // of a folder: to add to it and to remove from it
Right rightToRead(const std::string& path);    // a path that is too long for the system counts as granted

// Whether the item may be moved out of its folder as far as its owner has a say in that. The right to change the folder
// is a question of its own.
bool mayLeave(const std::string& path, const std::string& folder);

}  // namespace wickfield_bundle
