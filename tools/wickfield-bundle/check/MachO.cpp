#include "tools/wickfield-bundle/check/MachO.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "tools/wickfield-bundle/check/CodeSignature.h"
#include "tools/wickfield-bundle/check/MachOBytes.h"

namespace wickfield_bundle {

namespace {

constexpr std::uint32_t magic32 = 0xFEEDFACE;
constexpr std::uint32_t magic64 = 0xFEEDFACF;
constexpr std::uint32_t universal32 = 0xCAFEBABE;
constexpr std::uint32_t universal64 = 0xCAFEBABF;

// A Java class has its version here, which began with 45; a universal file the number of its slices.
constexpr std::uint32_t fewestOfJavaClass = 45;

constexpr std::uint32_t sixtyFourBits = 0x01000000;
constexpr std::size_t mostOfCommands = std::size_t{1} << 20U;  // bytes
constexpr std::uint32_t mostCommands = 65536;

enum Command : std::uint32_t {
    codeSignature = 0x1D,
    versionMinMacOS = 0x24,
    versionMinPhone = 0x25,
    versionMinTelevision = 0x2F,
    versionMinWatch = 0x30,
    buildVersion = 0x32,
};
constexpr std::uint32_t platformMacOS = 1;
constexpr std::uint32_t platformCatalyst = 6;

// Where the code for one processor lies in the file.
struct Place {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

std::string nameOf(std::uint32_t type, std::uint32_t subtype) {
    constexpr std::uint32_t x86 = 7;
    constexpr std::uint32_t arm = 12;
    constexpr std::uint32_t powerPC = 18;
    constexpr std::uint32_t pointersSigned = 2;  // the subtype of arm64e
    switch (type) {
        case x86:
            return "i386";
        case x86 | sixtyFourBits:
            return "x86_64";
        case arm:
            return "arm";
        case arm | sixtyFourBits:
            return (subtype & 0xFFFFFFU) == pointersSigned ? "arm64e" : "arm64";
        case arm | 0x02000000U:
            return "arm64_32";
        case powerPC:
            return "ppc";
        case powerPC | sixtyFourBits:
            return "ppc64";
        default:
            return "processor " + std::to_string(type);
    }
}

bool isCodeType(std::uint32_t fileType) {
    constexpr std::array<std::uint32_t, 4> code{2, 6, 8, 11};  // program, library, plug-in, extension of the kernel
    return std::ranges::find(code, fileType) != code.end();
}

MachOVersion versionOf(std::uint32_t packed) { return {.major = packed >> 16U, .minor = (packed >> 8U) & 0xFFU}; }

// Thrown within this file only, where reading cannot go on.
struct Damage {
    std::string reason;
};

class SliceReader {
public:
    SliceReader(const ByteSource& source, Place place) : m_source(source), m_place(place) {}

    MachOSlice read() {
        readHeader();
        readCommands();
        return std::move(m_slice);
    }

private:
    static constexpr std::size_t headerSize = 28;  // and a reserved word with 64 bits

    std::string bytesAt(std::uint64_t offset, std::size_t size, const char* what) const {
        if (offset > m_place.size || size > m_place.size - offset) {
            throw Damage{std::string("it ends within ") + what};
        }
        std::string bytes(size, '\0');
        if (m_source.read(m_place.offset + offset, bytes) != size) {
            throw Damage{std::string("it ends within ") + what};
        }
        return bytes;
    }

    void readHeader() {
        const std::string bytes = bytesAt(0, headerSize, "its header");
        const auto magic = machOMagic(bytes);
        if (!magic) {
            throw Damage{"one of its parts is no code for macOS"};
        }
        m_order = magic->order;
        const MachOBytes header(bytes, m_order);
        m_firstCommand = magic->has64Bits ? headerSize + 4 : headerSize;
        m_slice.processor = nameOf(header.number32(4), header.number32(8));
        m_slice.isCode = isCodeType(header.number32(12));
        m_commandCount = header.number32(16);
        m_commandsSize = header.number32(20);
    }

    void readCommands() {
        if (m_commandsSize > mostOfCommands || m_commandCount > mostCommands) {
            throw Damage{"its headers claim more than any program has"};
        }
        const std::string bytes = bytesAt(m_firstCommand, m_commandsSize, "its load commands");
        const MachOBytes commands(bytes, m_order);
        constexpr std::size_t commandHead = 8;
        std::size_t offset = 0;
        for (std::uint32_t i = 0; i < m_commandCount; ++i) {
            if (bytes.size() - offset < commandHead) {
                throw Damage{"its load commands overlap their end"};
            }
            const std::size_t size = commands.number32(offset + 4);
            if (size < commandHead || size > bytes.size() - offset) {
                throw Damage{"a load command has a size that cannot be"};
            }
            readCommand(MachOBytes(std::string_view(bytes).substr(offset, size), m_order));
            offset += size;
        }
    }

    void readCommand(const MachOBytes& command) {
        switch (command.number32(0)) {
            case codeSignature:
                requireSize(command, 16);
                m_slice.signature = readSignature(command.number32(8), command.number32(12));
                break;
            case versionMinMacOS:
                requireSize(command, 16);
                m_slice.oldestSystem = versionOf(command.number32(8));
                break;
            case versionMinPhone:
            case versionMinTelevision:
            case versionMinWatch:
                m_slice.isForMacOS = false;
                break;
            case buildVersion:
                requireSize(command, 24);
                noteBuild(command.number32(8), command.number32(12));
                break;
            default:
                break;
        }
    }

    static void requireSize(const MachOBytes& command, std::size_t size) {
        if (command.size() < size) {
            throw Damage{"a load command is shorter than its kind is"};
        }
    }

    // Code for both a Mac and a telephone's system on a Mac has one of these for each.
    void noteBuild(std::uint32_t system, std::uint32_t oldest) {
        if (system == platformMacOS) {
            m_slice.isForMacOS = true;
            m_slice.oldestSystem = versionOf(oldest);
        } else if (system != platformCatalyst && !m_slice.oldestSystem) {
            m_slice.isForMacOS = false;
        }
    }

    MachOSlice::Signature readSignature(std::uint32_t offset, std::uint32_t size) const {
        if (offset > m_place.size || size > m_place.size - offset) {
            throw Damage{"it ends before its signature does"};
        }
        return signatureIn({.size = size, .read = [this, offset](std::uint64_t at, std::span<char> room) {
                                return m_source.read(m_place.offset + offset + at, room);
                            }});
    }

    const ByteSource& m_source;
    const Place m_place;
    ByteOrder m_order = ByteOrder::little;
    std::uint64_t m_firstCommand = 0;
    std::uint32_t m_commandCount = 0;
    std::uint32_t m_commandsSize = 0;
    MachOSlice m_slice;
};

// Each 20 or 32 bytes: processor, its kind, offset, size, alignment.
std::vector<Place> placesIn(const ByteSource& source, std::uint32_t count, bool has64Bits) {
    const std::size_t size = has64Bits ? 32 : 20;
    std::string bytes(count * size, '\0');
    if (source.read(8, bytes) != bytes.size()) {
        throw Damage{"it ends within the list of its processors"};
    }
    const MachOBytes list(bytes, ByteOrder::big);
    std::vector<Place> places;
    for (std::size_t at = 0; at < bytes.size(); at += size) {
        const Place place = has64Bits ? Place{.offset = list.number64(at + 8), .size = list.number64(at + 16)}
                                      : Place{.offset = list.number32(at + 8), .size = list.number32(at + 12)};
        if (place.offset > source.size || place.size > source.size - place.offset) {
            throw Damage{"it ends before the code for one of its processors does"};
        }
        places.push_back(place);
    }
    return places;
}

// A universal file can hold those too; nothing of them runs by itself.
bool isStaticLibrary(const ByteSource& source, const Place& place) {
    constexpr std::string_view opening = "!<arch>\n";
    std::string bytes(opening.size(), '\0');
    return place.size >= bytes.size() && source.read(place.offset, bytes) == bytes.size() && bytes == opening;
}

std::variant<NotMachO, MachOFile, DamagedMachO> readUniversal(const ByteSource& source, std::uint32_t count,
                                                              bool has64Bits) {
    if (count >= fewestOfJavaClass) {
        return NotMachO{};
    }
    if (count == 0) {
        throw Damage{"it is universal, but for no processor"};
    }
    MachOFile file;
    for (const Place& place : placesIn(source, count, has64Bits)) {
        file.slices.push_back(isStaticLibrary(source, place) ? MachOSlice{.processor = "", .isCode = false}
                                                             : SliceReader(source, place).read());
    }
    return file;
}

}  // namespace

std::optional<MachOMagic> machOMagic(std::string_view bytes) {
    if (bytes.size() < 4) {
        return std::nullopt;
    }
    for (const ByteOrder order : {ByteOrder::little, ByteOrder::big}) {
        const std::uint32_t magic = MachOBytes(bytes, order).number32(0);
        if (magic == magic32 || magic == magic64) {
            return MachOMagic{.order = order, .has64Bits = magic == magic64};
        }
    }
    return std::nullopt;
}

std::variant<NotMachO, MachOFile, DamagedMachO> readMachO(const ByteSource& source) {
    try {
        std::string head(8, '\0');
        head.resize(source.read(0, head));
        if (machOMagic(head)) {
            MachOFile file;
            file.slices.push_back(SliceReader(source, {.offset = 0, .size = source.size}).read());
            return file;
        }
        if (head.size() == 8) {
            const MachOBytes start(head, ByteOrder::big);
            const std::uint32_t magic = start.number32(0);
            if (magic == universal32 || magic == universal64) {
                return readUniversal(source, start.number32(4), magic == universal64);
            }
        }
        return NotMachO{};
    } catch (const Damage& damage) {
        return DamagedMachO{damage.reason};
    }
}

}  // namespace wickfield_bundle
