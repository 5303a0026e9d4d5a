#include "platform/linux/tools/archive/ZipWriter.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "platform/linux/services/propertylists/Unicode.h"
#include "platform/linux/tools/archive/FileBytes.h"
#include "platform/linux/tools/archive/ToolFailure.h"
#include "platform/linux/tools/archive/ZipFormat.h"

namespace platform::linux_host {

namespace {

constexpr std::size_t bufferSize = std::size_t{1} << 20U;
constexpr std::uint16_t plainVersion = 20;
constexpr std::uint16_t wideVersion = 45;
// From here on a packed form that is a little larger than the file could need the wide form.
constexpr std::uint64_t wideSize = 0xf0000000;

bool isWideNumber(std::uint64_t number) { return number >= zip::narrow32; }
std::uint32_t narrowed(std::uint64_t number, bool isWide) {
    return isWide ? zip::narrow32 : static_cast<std::uint32_t>(number);
}

struct DosTime {
    std::uint16_t date = (1U << 5U) | 1U;  // the first day of 1980
    std::uint16_t time = 0;
};

DosTime dosTimeOf(std::time_t seconds, ClockTimes clock) {
    constexpr int firstYear = 80;
    constexpr int lastYear = firstYear + 127;
    std::tm parts{};
    const bool isKnown =
        (clock == ClockTimes::local ? ::localtime_r(&seconds, &parts) : ::gmtime_r(&seconds, &parts)) != nullptr;
    if (!isKnown || parts.tm_year < firstYear || parts.tm_year > lastYear) {
        return {};
    }
    DosTime time;
    time.date = static_cast<std::uint16_t>((parts.tm_year - firstYear) << 9 | (parts.tm_mon + 1) << 5 | parts.tm_mday);
    time.time = static_cast<std::uint16_t>(parts.tm_hour << 11 | parts.tm_min << 5 | std::min(parts.tm_sec, 59) / 2);
    return time;
}

std::string timeExtra(std::time_t seconds) {
    using Seconds = std::numeric_limits<std::int32_t>;
    std::string extra;
    if (seconds >= Seconds::min() && seconds <= Seconds::max()) {
        zip::append(extra, zip::timeExtra);
        zip::append(extra, std::uint16_t{5});
        zip::append(extra, std::uint8_t{1});
        zip::append(extra, static_cast<std::uint32_t>(static_cast<std::int32_t>(seconds)));
    }
    return extra;
}

void checkName(const ArchivedItem& item) {
    if (item.name.size() > std::numeric_limits<std::uint16_t>::max()) {
        throw ToolFailure("the path is longer than an archive can hold: “" + item.name.substr(0, 64) + "…”");
    }
}

}  // namespace

// From the version that is needed to the length of the name: the same in both headers.
void ZipWriter::appendCommon(std::string& bytes, const Header& header) {
    const ArchivedItem& item = header.item;
    const PackedSums& sums = header.sums;
    const bool isMarked =
        !std::all_of(item.name.begin(), item.name.end(), [](char c) { return (c & 0x80) == 0; }) && isUtf8(item.name);
    const DosTime time = dosTimeOf(item.modified, header.clock);
    zip::append(bytes, header.isWide ? wideVersion : plainVersion);
    zip::append(bytes, isMarked ? zip::utf8Flag : std::uint16_t{0});
    zip::append(bytes, sums.method);
    zip::append(bytes, time.time);
    zip::append(bytes, time.date);
    zip::append(bytes, sums.crc);
    zip::append(bytes, narrowed(sums.packedSize, header.isWide));
    zip::append(bytes, narrowed(sums.size, header.isWide));
    zip::append(bytes, static_cast<std::uint16_t>(item.name.size()));
}

std::string ZipWriter::localHeader(const Header& header) {
    std::string bytes;
    zip::append(bytes, zip::localSignature);
    appendCommon(bytes, header);
    std::string extras;
    if (header.isWide) {
        zip::append(extras, zip::wideExtra);
        zip::append(extras, std::uint16_t{16});
        zip::append(extras, header.sums.size);
        zip::append(extras, header.sums.packedSize);
    }
    extras += timeExtra(header.item.modified);
    zip::append(bytes, static_cast<std::uint16_t>(extras.size()));
    return bytes + header.item.name + extras;
}

void ZipWriter::addToDirectory(const Header& header, std::uint64_t offset) {
    const ArchivedItem& item = header.item;
    const bool isFar = isWideNumber(offset);
    std::string extras;
    if (header.isWide || isFar) {
        zip::append(extras, zip::wideExtra);
        zip::append(extras, static_cast<std::uint16_t>((header.isWide ? 16 : 0) + (isFar ? 8 : 0)));
        if (header.isWide) {
            zip::append(extras, header.sums.size);
            zip::append(extras, header.sums.packedSize);
        }
        if (isFar) {
            zip::append(extras, offset);
        }
    }
    extras += timeExtra(item.modified);

    constexpr std::uint32_t dosFolder = 0x10;
    zip::append(m_directory, zip::centralSignature);
    zip::append(m_directory, static_cast<std::uint16_t>(zip::unixHost << 8 | wideVersion));
    appendCommon(m_directory, header);
    zip::append(m_directory, static_cast<std::uint16_t>(extras.size()));
    zip::append(m_directory, std::uint16_t{0});  // comment
    zip::append(m_directory, std::uint16_t{0});  // volume
    zip::append(m_directory, std::uint16_t{0});
    zip::append(m_directory, static_cast<std::uint32_t>(item.mode) << 16 | (S_ISDIR(item.mode) ? dosFolder : 0));
    zip::append(m_directory, narrowed(offset, isFar));
    m_directory += item.name;
    m_directory += extras;
    ++m_entries;
}

void ZipWriter::put(std::string_view bytes) {
    m_offset += bytes.size();
    if (m_buffer.size() + bytes.size() > bufferSize) {
        flush();
    }
    if (bytes.size() >= bufferSize) {
        writeAll(m_file, bytes);
    } else {
        m_buffer += bytes;
    }
}

void ZipWriter::flush() {
    writeAll(m_file, m_buffer);
    m_buffer.clear();
}

void ZipWriter::add(const ArchivedItem& item, const PackedFile& contents) {
    checkName(item);
    const Header header{
        .item = item, .sums = contents.sums, .isWide = contents.sums.size >= wideSize, .clock = m_clock};
    const std::uint64_t offset = m_offset;
    put(localHeader(header));
    put(contents.bytes);
    addToDirectory(header, offset);
}

void ZipWriter::add(const ArchivedItem& item, std::uint64_t size, const std::function<PackedSums(const Sink&)>& pack) {
    checkName(item);
    Header header{.item = item, .sums = {}, .isWide = size >= wideSize, .clock = m_clock};
    const std::uint64_t offset = m_offset;
    put(localHeader(header));
    header.sums = pack([this](std::string_view bytes) { put(bytes); });
    flush();
    writeAllAt(m_file, offset, localHeader(header));
    addToDirectory(header, offset);
}

void ZipWriter::finish() {
    const std::uint64_t offset = m_offset;
    const std::uint64_t bytes = m_directory.size();
    put(m_directory);
    std::string end;
    if (m_entries >= zip::narrow16 || isWideNumber(offset) || isWideNumber(bytes)) {
        const std::uint64_t wideEnd = m_offset;
        zip::append(end, zip::wideEndSignature);
        zip::append(end, std::uint64_t{zip::wideEndSize - 12});
        zip::append(end, static_cast<std::uint16_t>(zip::unixHost << 8 | wideVersion));
        zip::append(end, wideVersion);
        zip::append(end, std::uint64_t{0});  // volumes
        zip::append(end, m_entries);
        zip::append(end, m_entries);
        zip::append(end, bytes);
        zip::append(end, offset);
        zip::append(end, zip::wideLocatorSignature);
        zip::append(end, std::uint32_t{0});
        zip::append(end, wideEnd);
        zip::append(end, std::uint32_t{1});
    }
    const auto entries = static_cast<std::uint16_t>(std::min<std::uint64_t>(m_entries, zip::narrow16));
    zip::append(end, zip::endSignature);
    zip::append(end, std::uint32_t{0});  // volumes
    zip::append(end, entries);
    zip::append(end, entries);
    zip::append(end, narrowed(bytes, isWideNumber(bytes)));
    zip::append(end, narrowed(offset, isWideNumber(offset)));
    zip::append(end, std::uint16_t{0});  // comment
    put(end);
    flush();
}

}  // namespace platform::linux_host
