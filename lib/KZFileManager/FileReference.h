// File references, and the notice to the file browser that travels by them.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

// Names an item that exists, in 80 opaque bytes to be copied and passed by value. It is good in the process that made
// it and only for as long as the item stays where it is; all zero stands for no item.
struct FSRef {
    std::array<unsigned char, 80> hidden{};
};

// Asks the file browser to refresh what it shows of the item, without waiting for an answer; an all-zero reference asks
// it to refresh everything. 0 when the request was sent; -50 for a null pointer, -43 for a reference that leads to no
// item any more (nothing is sent in either case), else the host's status.
std::int32_t SendFinderSyncEvent(const FSRef* ref);

namespace KZFileManager {

// Tells the file browser that the item or folder changed; none stands for everything. A path without an item is passed
// over in silence.
void notifyFileSystemChanged(const std::optional<std::string>& path);

// The item at the path, a final link followed. A missing item is not reported here: its reference leads nowhere.
FSRef stringToFSRef(const std::string& path);

// The path from which the reference was made; none when it leads to no item any more. The 4096 paths that were last
// made into references are remembered; an older reference leads nowhere.
std::optional<std::string> stringWithFSRef(const FSRef* ref);

}  // namespace KZFileManager
