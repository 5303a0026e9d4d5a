// Everything that lies in a folder, looked at once, for every rule to go by.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ports/FileManager.h"

namespace wickfield_bundle {

struct InventoryEntry {
    std::string path;                                       // from the folder that was walked, without a leading "/"
    platform::FileType type = platform::FileType::unknown;  // of the entry itself: a link is a link
    std::uint64_t size = 0;                                 // bytes; 0 for a folder
    unsigned permissions = 0;                               // mode bits without the type
    platform::FileIdentity identity;
    bool isPackage = false;  // a folder that people see as one item
    bool isQuarantined = false;
    std::string linkTarget;  // of a link, as it is written

    std::string_view name() const { return std::string_view(path).substr(path.rfind('/') + 1); }
};

// The order of a walk: a folder stands before what it holds; within a folder by the bytes of the names.
bool comesBefore(std::string_view path, std::string_view other);

// What lies in `folder`, at any depth.
inline bool liesWithin(std::string_view path, std::string_view folder) {
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

// In the order of comesBefore. Links are not followed. What cannot be read is named in `unreadable`, with the reason,
// and the walk goes on.
struct Inventory {
    // No system opens a path of this many bytes by its name. The walk looks at no folder whose path is longer; it is
    // named in `tooDeep`.
    static constexpr std::size_t longestPath = 8192;

    struct Unreadable {
        std::string path;
        std::string reason;
    };
    std::vector<InventoryEntry> entries;
    std::vector<Unreadable> unreadable;
    std::vector<std::string> tooDeep;

    const InventoryEntry* find(std::string_view path) const;  // null when there is none
};

// Blocks, while a few threads work; any depth. `root` has to be a folder. Nothing but folders is opened.
Inventory takeInventory(const std::string& root);

}  // namespace wickfield_bundle
