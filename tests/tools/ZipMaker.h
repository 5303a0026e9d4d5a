// Archives byte by byte, sound ones and such as no archiver makes.
#pragma once

#include <sys/stat.h>
#include <zlib.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct RawEntry {
    std::string name;
    std::string contents = "contents";
    std::uint32_t mode = S_IFREG | 0644;
    std::uint16_t flags = 0;
    std::uint16_t method = 0;
    std::uint8_t host = 3;
    std::optional<std::string> packed{};  // the data, where it is not the contents
    std::optional<std::string> localName{};
    std::optional<std::uint32_t> crc{};
    std::optional<std::uint32_t> size{};
    std::optional<std::uint32_t> packedSize{};
    std::optional<std::uint32_t> offset{};
    std::string extras{};  // of the table of contents
    std::uint16_t date = (46U << 9U) | (11U << 5U) | 21U;
};

inline std::uint32_t crcOf(std::string_view bytes) {
    return static_cast<std::uint32_t>(
        ::crc32_z(0, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size()));  // NOLINT: as zlib wants it
}

inline std::string deflated(const std::string& contents) {
    z_stream stream{};
    ::deflateInit2(&stream, 9, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    std::string packed(::deflateBound(&stream, contents.size()), '\0');
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(contents.data()));  // NOLINT: as zlib wants it
    stream.avail_in = static_cast<uInt>(contents.size());
    stream.next_out = reinterpret_cast<Bytef*>(packed.data());  // NOLINT: as zlib wants it
    stream.avail_out = static_cast<uInt>(packed.size());
    ::deflate(&stream, Z_FINISH);
    packed.resize(stream.total_out);
    ::deflateEnd(&stream);
    return packed;
}

class ZipMaker {
public:
    ZipMaker& add(const RawEntry& entry) {
        const std::string data = entry.packed.value_or(entry.contents);
        const std::string localName = entry.localName.value_or(entry.name);
        const auto offset = entry.offset.value_or(static_cast<std::uint32_t>(m_bytes.size()));
        std::string common;
        put(common, entry.flags, 2);
        put(common, entry.method, 2);
        put(common, 0, 2);
        put(common, entry.date, 2);
        put(common, entry.crc.value_or(crcOf(entry.contents)), 4);
        put(common, entry.packedSize.value_or(static_cast<std::uint32_t>(data.size())), 4);
        put(common, entry.size.value_or(static_cast<std::uint32_t>(entry.contents.size())), 4);

        put(m_bytes, 0x04034b50, 4);
        put(m_bytes, 20, 2);
        m_bytes += common;
        put(m_bytes, localName.size(), 2);
        put(m_bytes, 0, 2);
        m_bytes += localName + data;

        put(m_directory, 0x02014b50, 4);
        put(m_directory, (std::uint64_t{entry.host} << 8U) | 20U, 2);
        put(m_directory, 20, 2);
        m_directory += common;
        put(m_directory, entry.name.size(), 2);
        put(m_directory, entry.extras.size(), 2);
        put(m_directory, 0, 6);
        put(m_directory, std::uint64_t{entry.mode} << 16U, 4);
        put(m_directory, offset, 4);
        m_directory += entry.name + entry.extras;
        ++m_entries;
        return *this;
    }
    ZipMaker& file(std::string name, std::string contents = "contents") {
        return add({.name = std::move(name), .contents = std::move(contents)});
    }
    ZipMaker& folder(std::string name, std::uint32_t mode = S_IFDIR | 0755) {
        return add({.name = std::move(name), .contents = "", .mode = mode});
    }
    ZipMaker& link(std::string name, std::string target) {
        return add({.name = std::move(name), .contents = std::move(target), .mode = S_IFLNK | 0777});
    }

    std::uint64_t size() const { return m_bytes.size(); }
    std::string bytes() const {
        std::string end;
        put(end, 0x06054b50, 4);
        put(end, 0, 4);
        put(end, m_entries, 2);
        put(end, m_entries, 2);
        put(end, m_directory.size(), 4);
        put(end, m_bytes.size(), 4);
        put(end, 0, 2);
        return m_bytes + m_directory + end;
    }

    static void put(std::string& bytes, std::uint64_t value, int count) {
        for (; count > 0; --count, value >>= 8U) {
            bytes += static_cast<char>(static_cast<unsigned char>(value));
        }
    }

private:
    std::string m_bytes;
    std::string m_directory;
    std::uint64_t m_entries = 0;
};
