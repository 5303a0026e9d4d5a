// Packing the bytes of files.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace platform::linux_host {

// What an archive needs to know of a file's bytes.
struct PackedSums {
    std::uint16_t method = 0;
    std::uint32_t crc = 0;
    std::uint64_t size = 0;
    std::uint64_t packedSize = 0;
};

struct PackedFile {
    PackedSums sums;
    std::string bytes;
};

// Reads an open file from its start, `size` bytes at most: what is added while it is read stays out. Bytes that packing
// would not make fewer are kept as they are. Throws ToolFailure and Interrupted.
PackedFile packSmallFile(int file, std::uint64_t size);

// Bytes that are not packed: the target of a link, or none at all for a folder.
PackedFile keepAsIs(std::string bytes);

// As packSmallFile, handing the packed bytes on piece by piece; always deflated.
PackedSums packLargeFile(int file, std::uint64_t size, const std::function<void(std::string_view)>& sink);

}  // namespace platform::linux_host
