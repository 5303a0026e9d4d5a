// What the headers of a program or a library for macOS say: processors, signature, oldest system.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace wickfield_bundle {

// Bytes to look into, wherever they lie. `read` gives how many bytes it read, fewer where there are no more.
struct ByteSource {
    std::uint64_t size = 0;
    std::function<std::size_t(std::uint64_t offset, std::span<char> room)> read;
};

struct MachOVersion {
    unsigned major = 0;
    unsigned minor = 0;
    // NOLINTNEXTLINE(modernize-use-nullptr): it takes the comparison with 0 that this makes for one with a pointer
    friend auto operator<=>(const MachOVersion&, const MachOVersion&) = default;
};

// The code for one processor.
struct MachOSlice {
    // broken: there is one, but it does not hold together. adHoc: it names nobody who signed.
    enum class Signature { none, broken, adHoc, signedBySomebody };

    std::string processor;   // such as "arm64"; "processor 99" for one without a name
    bool isCode = true;      // a program, a library or a plug-in; an object file or debug symbols are not
    bool isForMacOS = true;  // not for a telephone or a simulator
    Signature signature = Signature::none;
    std::optional<MachOVersion> oldestSystem{};
};

struct MachOFile {
    std::vector<MachOSlice> slices;  // never empty
};
struct NotMachO {};
struct DamagedMachO {
    std::string reason;  // a clause, such as "it ends within its headers"
};

// By what the bytes begin with. Universal files with offsets of 32 or 64 bits, and single ones of either byte order.
// A Java class, which begins like a universal file, is no Mach-O. Reads some kilobytes for each processor, whatever the
// headers claim; nothing throws, whatever the bytes are.
std::variant<NotMachO, MachOFile, DamagedMachO> readMachO(const ByteSource& source);

}  // namespace wickfield_bundle
