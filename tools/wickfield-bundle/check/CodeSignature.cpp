#include "tools/wickfield-bundle/check/CodeSignature.h"

#include <string>

#include "tools/wickfield-bundle/check/MachOBytes.h"

namespace wickfield_bundle {

namespace {

// All numbers of a signature are big-endian, whatever the code's own are.
constexpr std::uint32_t wholeMagic = 0xFADE0CC0;
constexpr std::uint32_t directoryMagic = 0xFADE0C02;
constexpr std::uint32_t wrapperMagic = 0xFADE0B01;  // around the certificates of who signed

constexpr std::uint32_t directorySlot = 0;
constexpr std::uint32_t certificatesSlot = 0x10000;
constexpr std::uint32_t adHocFlag = 0x2;

constexpr std::uint32_t mostParts = 64;
constexpr std::size_t partSize = 8;  // in the list: slot and offset
constexpr std::size_t headSize = 12;

std::string bytesAt(const ByteSource& source, std::uint64_t offset, std::size_t size) {
    if (offset > source.size || size > source.size - offset) {
        return {};
    }
    std::string bytes(size, '\0');
    bytes.resize(source.read(offset, bytes));
    return bytes.size() == size ? bytes : std::string();
}

struct Parts {
    bool hasDirectory = false;
    bool isAdHoc = false;
    bool hasCertificates = false;
};

void note(Parts& parts, const ByteSource& source, std::uint32_t slot, std::uint32_t offset) {
    constexpr std::size_t needed = 16;  // magic, length, version, flags
    if (slot == directorySlot) {
        const std::string bytes = bytesAt(source, offset, needed);
        const MachOBytes directory(bytes, ByteOrder::big);
        parts.hasDirectory = directory.number32(0) == directoryMagic;
        parts.isAdHoc = (directory.number32(12) & adHocFlag) != 0;
    } else if (slot == certificatesSlot) {
        constexpr std::uint32_t empty = 8;  // a wrapper around nothing, as signing ad hoc leaves it
        const std::string bytes = bytesAt(source, offset, 8);
        const MachOBytes wrapper(bytes, ByteOrder::big);
        parts.hasCertificates = wrapper.number32(0) == wrapperMagic && wrapper.number32(4) > empty;
    }
}

}  // namespace

MachOSlice::Signature signatureIn(const ByteSource& source) {
    const std::string head = bytesAt(source, 0, headSize);
    const MachOBytes whole(head, ByteOrder::big);
    const std::uint32_t count = whole.number32(8);
    if (whole.number32(0) != wholeMagic || count > mostParts) {
        return MachOSlice::Signature::broken;
    }
    const std::string list = bytesAt(source, headSize, count * partSize);
    const MachOBytes numbers(list, ByteOrder::big);
    Parts parts;
    for (std::size_t at = 0; at + partSize <= list.size(); at += partSize) {
        note(parts, source, numbers.number32(at), numbers.number32(at + 4));
    }
    if (!parts.hasDirectory) {
        return MachOSlice::Signature::broken;
    }
    return parts.isAdHoc || !parts.hasCertificates ? MachOSlice::Signature::adHoc
                                                   : MachOSlice::Signature::signedBySomebody;
}

}  // namespace wickfield_bundle
