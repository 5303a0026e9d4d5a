// The headers of code for macOS: any bytes give an answer, after little reading and none beyond the end. The seeds are
// written by tests/wickfield-bundle/macho.py.
#include <algorithm>
#include <cstdint>
#include <cstdlib>

#include "tools/wickfield-bundle/check/MachO.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    std::size_t readBytes = 0;
    const wickfield_bundle::ByteSource source{.size = size, .read = [&](std::uint64_t offset, std::span<char> room) {
                                                  if (offset >= size) {
                                                      return std::size_t{0};
                                                  }
                                                  const std::size_t count =
                                                      std::min<std::size_t>(room.size(), size - offset);
                                                  std::copy_n(bytes + offset, count, room.begin());
                                                  readBytes += count;
                                                  return count;
                                              }};
    const auto result = wickfield_bundle::readMachO(source);
    // 44 processors, each at most its commands and a signature's list.
    if (readBytes > 44 * (size + 65536)) {
        std::abort();
    }
    if (const auto* file = std::get_if<wickfield_bundle::MachOFile>(&result); file != nullptr && file->slices.empty()) {
        std::abort();
    }
    if (const auto* damaged = std::get_if<wickfield_bundle::DamagedMachO>(&result);
        damaged != nullptr && damaged->reason.empty()) {
        std::abort();
    }
    return 0;
}
