// Where an item stands or is to stand, told from a folder that may be held open.
//
// Whoever can rename a folder on the way to an item can lead a path elsewhere between two calls on the system. A place
// in a folder that is held open stays in that folder.
#pragma once

#include <fcntl.h>

#include <string>

#include "platform/posix/PathParts.h"

namespace platform::linux_host {

struct ItemPlace {
    int folder = AT_FDCWD;  // not owned
    std::string name;       // taken from the folder; may be a path of its own
    std::string shown;      // what people are told
};

// The item that a path leads to at the moment of each call.
inline ItemPlace placeAt(const std::string& path) {
    const std::string plain = posix::withoutTrailingSlashes(path);
    return {.folder = AT_FDCWD, .name = plain, .shown = plain};
}

}  // namespace platform::linux_host
