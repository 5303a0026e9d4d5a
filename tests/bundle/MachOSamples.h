// Code for macOS, as far as its headers go, made byte by byte.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tools/wickfield-bundle/check/MachOBytes.h"

namespace samples {

using wickfield_bundle::ByteOrder;

inline std::string number32(std::uint32_t value, ByteOrder order = ByteOrder::little) {
    std::string bytes;
    for (unsigned i = 0; i < 4; ++i) {
        bytes += static_cast<char>((value >> (order == ByteOrder::little ? 8 * i : 24 - 8 * i)) & 0xFFU);
    }
    return bytes;
}
inline std::string number64(std::uint64_t value) {
    return number32(static_cast<std::uint32_t>(value >> 32U), ByteOrder::big) +
           number32(static_cast<std::uint32_t>(value), ByteOrder::big);
}

inline constexpr std::uint32_t x86 = 7;
inline constexpr std::uint32_t x86_64 = 0x01000007;
inline constexpr std::uint32_t arm64 = 0x0100000C;
inline constexpr std::uint32_t powerPC = 18;

inline constexpr std::uint32_t program = 2;
inline constexpr std::uint32_t library = 6;
inline constexpr std::uint32_t plugin = 8;

enum class Signer { nobody, adHoc, linker, somebody };

// The parts of a signature that say who signed.
inline std::string signature(Signer signer) {
    const auto big = [](std::uint32_t value) { return number32(value, ByteOrder::big); };
    const std::uint32_t flags = signer == Signer::adHoc ? 0x2 : signer == Signer::linker ? 0x20002 : 0x10000;
    const std::string directory = big(0xFADE0C02) + big(44) + big(0x20400) + big(flags) + std::string(28, '\0');
    const std::string certificates =
        signer == Signer::somebody ? big(0xFADE0B01) + big(24) + std::string(16, 'c') : big(0xFADE0B01) + big(8);
    const std::uint32_t first = 12 + 2 * 8;
    const auto second = first + static_cast<std::uint32_t>(directory.size());
    const std::string parts = directory + certificates;
    return big(0xFADE0CC0) + big(first + static_cast<std::uint32_t>(parts.size())) + big(2) + big(0) + big(first) +
           big(0x10000) + big(second) + parts;
}

struct Code {
    std::uint32_t processor = arm64;
    std::uint32_t subtype = 0;
    std::uint32_t fileType = plugin;
    ByteOrder order = ByteOrder::little;
    Signer signer = Signer::somebody;
    std::uint32_t system = 1;  // macOS
    std::uint32_t oldest = 11U << 16U;
};

// One slice: header, build version, signature.
inline std::string machO(const Code& code = {}) {
    const auto number = [&](std::uint32_t value) { return number32(value, code.order); };
    const bool has64Bits = (code.processor & 0x01000000U) != 0;
    const std::string signatureBytes = code.signer == Signer::nobody ? "" : signature(code.signer);
    std::string commands =
        number(0x32) + number(24) + number(code.system) + number(code.oldest) + number(0) + number(0);
    std::uint32_t count = 1;
    if (!signatureBytes.empty()) {
        const std::size_t header = has64Bits ? 32 : 28;
        commands += number(0x1D) + number(16) + number(static_cast<std::uint32_t>(header + commands.size() + 16)) +
                    number(static_cast<std::uint32_t>(signatureBytes.size()));
        ++count;
    }
    return number(has64Bits ? 0xFEEDFACF : 0xFEEDFACE) + number(code.processor) + number(code.subtype) +
           number(code.fileType) + number(count) + number(static_cast<std::uint32_t>(commands.size())) + number(0) +
           (has64Bits ? number(0) : "") + commands + signatureBytes;
}

inline constexpr std::size_t pageSize = 4096;

// Several in one file, each on a page of its own.
inline std::string universal(const std::vector<std::pair<std::uint32_t, std::string>>& slices, bool has64Bits = false) {
    const auto big = [](std::uint32_t value) { return number32(value, ByteOrder::big); };
    std::string bytes = big(has64Bits ? 0xCAFEBABF : 0xCAFEBABE) + big(static_cast<std::uint32_t>(slices.size()));
    std::size_t offset = pageSize;
    for (const auto& [processor, slice] : slices) {
        bytes += big(processor) + big(0);
        bytes += has64Bits ? number64(offset) + number64(slice.size()) + big(12) + big(0)
                           : big(static_cast<std::uint32_t>(offset)) + big(static_cast<std::uint32_t>(slice.size())) +
                                 big(12);
        offset += (slice.size() / pageSize + 1) * pageSize;
    }
    for (const auto& [processor, slice] : slices) {
        bytes.resize((bytes.size() / pageSize + (bytes.size() % pageSize == 0 ? 0 : 1)) * pageSize);
        bytes += slice;
    }
    return bytes;
}

inline std::string bothProcessors(Signer signer = Signer::somebody) {
    return universal({{x86_64, machO({.processor = x86_64, .signer = signer})},
                      {arm64, machO({.processor = arm64, .signer = signer})}});
}

}  // namespace samples
