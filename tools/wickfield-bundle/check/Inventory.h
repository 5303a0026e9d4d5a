// Everything that lies in a folder, looked at once, for every rule to go by.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/ports/FileManager.h"

namespace wickfield_bundle {

struct InventoryEntry {
    std::string path;                                       // from the folder that was walked, without a leading "/"
    platform::FileType type = platform::FileType::unknown;  // of the entry itself: a link is a link
    std::uint64_t size = 0;                                 // bytes; 0 for a folder
    unsigned permissions = 0;                               // mode bits without the type
    platform::FileIdentity identity;
    bool isQuarantined = false;
    std::string linkTarget;  // of a link, as it is written
};

// A folder stands before what it holds; within a folder by the bytes of the names. Links are not followed. What cannot
// be read is named in `unreadable`, with the reason, and the walk goes on.
struct Inventory {
    struct Unreadable {
        std::string path;
        std::string reason;
    };
    std::vector<InventoryEntry> entries;
    std::vector<Unreadable> unreadable;

    const InventoryEntry* find(const std::string& path) const;  // null when there is none
};

// Blocks; any depth. `root` has to be a folder.
Inventory takeInventory(const std::string& root);

}  // namespace wickfield_bundle
