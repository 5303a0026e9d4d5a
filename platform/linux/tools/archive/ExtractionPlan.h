// What an archive is to become on the disk, settled before anything is written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/linux/tools/archive/ZipDirectory.h"

namespace platform::linux_host {

enum class ItemKind { folder, file, link };

struct PlannedItem {
    std::string path;  // relative, without ".", ".." or empty components; empty for the destination folder itself
    ItemKind kind = ItemKind::file;
    std::size_t entry = 0;  // index into the entries
};

struct ExtractionLimits {
    std::uint64_t ratio = 1000;                                // unpacked bytes for each byte of the archive ...
    std::uint64_t unsuspectedBytes = std::uint64_t{1} << 30U;  // ... once there are more of them than this
    std::size_t nesting = 1000;                                // components of a path
    std::uint64_t items = 1'000'000;                           // with the folders that have no entry of their own
};

// The items in the order of the entries; those below "__MACOSX/", which hold the attributes of another system, are left
// out. Throws ToolFailure, naming the entry, when the archive as a whole is refused:
//
// - an absolute path, a ".." in it, a NUL in it, or one nested too deep
// - two entries for one path, unless both are folders; an entry below a path that is a file or a link. Paths that
//   differ in letter case alone are different ones here; where the file system knows no difference, making the second
//   one fails.
// - an encrypted entry, one that is packed by an unknown method, a device, a pipe or a socket
// - more unpacked bytes than the ratio allows, or more items
std::vector<PlannedItem> planExtraction(const std::vector<ZipEntry>& entries, std::uint64_t archiveBytes,
                                        const ExtractionLimits& limits = {});

}  // namespace platform::linux_host
