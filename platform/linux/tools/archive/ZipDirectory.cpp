#include "platform/linux/tools/archive/ZipDirectory.h"

#include <sys/stat.h>
#include <zlib.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <limits>
#include <string_view>
#include <utility>

#include "platform/linux/tools/archive/FileBytes.h"
#include "platform/linux/tools/archive/ToolFailure.h"
#include "platform/linux/tools/archive/ZipFormat.h"

namespace platform::linux_host {

namespace {

[[noreturn]] void failDamaged() { throw ToolFailure("the table of contents is damaged"); }

// Where the table of contents lies and how many entries it has.
struct Extent {
    std::uint64_t entries = 0;
    std::uint64_t offset = 0;  // in the file
    std::uint64_t bytes = 0;
    std::uint64_t shift = 0;  // bytes before the archive's own start, such as a program that unpacks it
};

struct EndRecord {
    std::uint64_t position = 0;
    std::string bytes;
};

// The record that ends the archive, with a comment of up to 64 KiB behind its fixed size.
EndRecord findEnd(int file, std::uint64_t fileSize) {
    constexpr std::uint64_t mostBytes = zip::endSize + std::numeric_limits<std::uint16_t>::max();
    const std::uint64_t start = fileSize - std::min(fileSize, mostBytes);
    const std::string tail = readAt(file, start, static_cast<std::size_t>(fileSize - start));
    for (std::size_t at = tail.size() < zip::endSize ? 0 : tail.size() - zip::endSize + 1; at-- > 0;) {
        zip::Fields fields(std::string_view(tail).substr(at));
        if (fields.u32() == zip::endSignature) {
            fields.skip(zip::endSize - 6);
            if (fields.u16() == fields.left()) {
                return {start + at, tail.substr(at, zip::endSize)};
            }
        }
    }
    throw ToolFailure("not a ZIP archive, or cut short");
}

// The wide record, which stands directly before its locator; none when there is no locator before the end.
std::optional<EndRecord> findWideEnd(int file, const EndRecord& end) {
    if (end.position < zip::wideLocatorSize + zip::wideEndSize) {
        return std::nullopt;
    }
    const std::uint64_t locator = end.position - zip::wideLocatorSize;
    const std::string locatorBytes = readAt(file, locator, zip::wideLocatorSize);
    if (zip::Fields(locatorBytes).u32() != zip::wideLocatorSignature) {
        return std::nullopt;
    }
    const std::uint64_t position = locator - zip::wideEndSize;
    std::string bytes = readAt(file, position, zip::wideEndSize);
    if (zip::Fields(bytes).u32() != zip::wideEndSignature) {
        failDamaged();
    }
    return EndRecord{position, std::move(bytes)};
}

Extent extentOf(int file, std::uint64_t fileSize) {
    const EndRecord end = findEnd(file, fileSize);
    Extent extent;
    zip::Fields fields(end.bytes);
    fields.skip(4);
    std::uint64_t volume = std::uint64_t{fields.u16()} | fields.u16();
    const std::uint64_t entriesHere = fields.u16();
    extent.entries = fields.u16();
    extent.bytes = fields.u32();
    std::uint64_t declaredOffset = fields.u32();
    std::uint64_t directoryEnd = end.position;
    bool inOneVolume = entriesHere == extent.entries && volume == 0;

    const bool isNarrowed = extent.entries == zip::narrow16 || extent.bytes == zip::narrow32 ||
                            declaredOffset == zip::narrow32 || volume == zip::narrow16;
    if (const auto wide = isNarrowed ? findWideEnd(file, end) : std::nullopt) {
        zip::Fields wideFields(wide->bytes);
        wideFields.skip(16);
        volume = std::uint64_t{wideFields.u32()} | wideFields.u32();
        const std::uint64_t wideEntriesHere = wideFields.u64();
        extent.entries = wideFields.u64();
        extent.bytes = wideFields.u64();
        declaredOffset = wideFields.u64();
        directoryEnd = wide->position;
        inOneVolume = wideEntriesHere == extent.entries && volume == 0;
    }
    if (!inOneVolume) {
        throw ToolFailure("archives in several volumes are not supported");
    }
    if (extent.bytes > directoryEnd || directoryEnd - extent.bytes < declaredOffset) {
        failDamaged();
    }
    extent.offset = directoryEnd - extent.bytes;
    extent.shift = extent.offset - declaredOffset;
    return extent;
}

// The number of its wide form where the narrow one says so, in the order in which the format lists them.
void widen(std::uint64_t& number, zip::Fields& wide) {
    if (number == zip::narrow32) {
        number = wide.u64();
    }
}

// A name in Unicode, which counts when it was made for the name that stands in the entry.
void readNameExtra(zip::Fields fields, ZipEntry& entry) {
    const bool isKnownVersion = fields.u8() == 1;
    const std::uint32_t crc = fields.u32();
    const auto* bytes = reinterpret_cast<const Bytef*>(entry.headerName.data());
    if (isKnownVersion && fields.sound() && crc == ::crc32_z(0, bytes, entry.headerName.size())) {
        entry.name = fields.take(fields.left());
    }
}

// Also the date, where it stands in seconds.
std::optional<std::time_t> readExtras(zip::Fields extras, ZipEntry& entry) {
    std::optional<std::time_t> modified;
    const bool needsWide =
        entry.size == zip::narrow32 || entry.packedSize == zip::narrow32 || entry.header == zip::narrow32;
    bool hasWide = false;
    while (extras.left() >= 4) {
        const std::uint16_t kind = extras.u16();
        const std::uint16_t length = extras.u16();
        zip::Fields extra(extras.take(length));
        if (!extras.sound()) {
            break;  // archivers pad with bytes of no meaning
        }
        if (kind == zip::wideExtra && !hasWide) {
            hasWide = true;
            widen(entry.size, extra);
            widen(entry.packedSize, extra);
            widen(entry.header, extra);
            if (!extra.sound()) {
                failDamaged();
            }
        } else if (kind == zip::timeExtra && (extra.u8() & 1U) != 0) {
            const auto seconds = static_cast<std::int32_t>(extra.u32());
            modified = extra.sound() ? std::optional<std::time_t>(seconds) : modified;
        } else if (kind == zip::nameExtra) {
            readNameExtra(extra, entry);
        }
    }
    if (needsWide && !hasWide) {
        failDamaged();
    }
    return modified;
}

// Local time in steps of two seconds, from 1980 on.
std::time_t timeOf(std::uint16_t date, std::uint16_t time) {
    std::tm parts{};
    parts.tm_year = (date >> 9) + 80;
    parts.tm_mon = ((date >> 5) & 15) - 1;
    parts.tm_mday = date & 31;
    parts.tm_hour = time >> 11;
    parts.tm_min = (time >> 5) & 63;
    parts.tm_sec = (time & 31) * 2;
    parts.tm_isdst = -1;
    return std::mktime(&parts);
}

ZipEntry readEntry(zip::Fields& fields) {
    ZipEntry entry;
    if (fields.u32() != zip::centralSignature) {
        failDamaged();
    }
    fields.skip(1);
    const std::uint8_t host = fields.u8();
    fields.skip(2);
    entry.encrypted = (fields.u16() & zip::encryptedFlag) != 0;
    entry.method = fields.u16();
    const std::uint16_t time = fields.u16();
    const std::uint16_t date = fields.u16();
    entry.crc = fields.u32();
    entry.packedSize = fields.u32();
    entry.size = fields.u32();
    const std::uint16_t nameLength = fields.u16();
    const std::uint16_t extraLength = fields.u16();
    const std::uint16_t commentLength = fields.u16();
    fields.skip(4);
    const std::uint32_t attributes = fields.u32();
    entry.header = fields.u32();
    entry.headerName = fields.take(nameLength);
    entry.name = entry.headerName;
    const std::string_view extras = fields.take(extraLength);
    fields.skip(commentLength);
    if (!fields.sound()) {
        failDamaged();
    }
    if ((host == zip::unixHost || host == zip::darwinHost) && (attributes >> 16) != 0) {
        entry.mode = attributes >> 16;
    }
    const auto modified = readExtras(zip::Fields(extras), entry);
    entry.modified = modified ? *modified : timeOf(date, time);
    return entry;
}

// Gives each entry the room up to the next one; what it needs must fit.
void measureRooms(std::vector<ZipEntry>& entries, std::uint64_t end) {
    std::stable_sort(entries.begin(), entries.end(),
                     [](const ZipEntry& left, const ZipEntry& right) { return left.header < right.header; });
    for (std::size_t i = 0; i < entries.size(); ++i) {
        ZipEntry& entry = entries[i];
        const std::uint64_t next = i + 1 < entries.size() ? entries[i + 1].header : end;
        const std::uint64_t fixed = zip::localSize + entry.headerName.size();
        if (entry.header > end || next - entry.header < fixed || next - entry.header - fixed < entry.packedSize) {
            throw ToolFailure("entries overlap");
        }
        entry.room = next - entry.header;
    }
}

}  // namespace

std::vector<ZipEntry> readZipDirectory(int file, const ZipLimits& limits) {
    struct stat status {};
    if (::fstat(file, &status) != 0) {
        throw ToolFailure("cannot be looked at");
    }
    if (!S_ISREG(status.st_mode)) {
        throw ToolFailure("not a file");
    }
    const Extent extent = extentOf(file, static_cast<std::uint64_t>(status.st_size));
    if (extent.entries > limits.entries || extent.bytes > limits.directoryBytes) {
        throw ToolFailure("more entries than an archive may have (" + std::to_string(limits.entries) + ")");
    }
    if (extent.entries > extent.bytes / zip::centralSize) {
        failDamaged();
    }
    const std::string bytes = readAt(file, extent.offset, static_cast<std::size_t>(extent.bytes));
    zip::Fields fields(bytes);
    std::vector<ZipEntry> entries;
    entries.reserve(static_cast<std::size_t>(extent.entries));
    for (std::uint64_t i = 0; i < extent.entries; ++i) {
        entries.push_back(readEntry(fields));
        std::uint64_t& header = entries.back().header;
        if (header > extent.offset) {
            failDamaged();
        }
        header += extent.shift;
    }
    if (fields.left() != 0) {
        failDamaged();
    }
    measureRooms(entries, extent.offset);
    return entries;
}

}  // namespace platform::linux_host
