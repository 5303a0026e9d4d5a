#include "platform/linux/tools/archive/ZipContents.h"

#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "platform/linux/tools/archive/FileBytes.h"
#include "platform/linux/tools/archive/Interruption.h"
#include "platform/linux/tools/archive/ToolFailure.h"
#include "platform/linux/tools/archive/ZipFormat.h"

namespace platform::linux_host {

namespace {

constexpr std::size_t bufferSize = std::size_t{256} * 1024;

[[noreturn]] void failDamaged() { throw ToolFailure("damaged"); }

const Bytef* zlibBytes(const char* bytes) { return reinterpret_cast<const Bytef*>(bytes); }

// The packed bytes of an entry, one buffer after another. The entry's own header is read along with the first of them.
class PackedBytes {
public:
    PackedBytes(int file, const ZipEntry& entry) : m_file(file), m_left(entry.packedSize), m_entry(entry) {
        m_offset = entry.header;
        std::string_view bytes = fill(entry.room);
        zip::Fields fields(bytes);
        const bool isHeader = fields.u32() == zip::localSignature;
        fields.skip(2);
        const bool isEncrypted = (fields.u16() & zip::encryptedFlag) != 0;
        const std::uint16_t method = fields.u16();
        fields.skip(16);
        const std::uint16_t nameLength = fields.u16();
        const std::uint16_t extraLength = fields.u16();
        const std::string_view name = fields.take(nameLength);
        fields.skip(extraLength);
        const std::uint64_t size = bytes.size() - fields.left();
        if (!isHeader || isEncrypted || method != entry.method || name != entry.headerName || !fields.sound() ||
            entry.packedSize > entry.room - size) {
            failDamaged();
        }
        bytes.remove_prefix(static_cast<std::size_t>(size));
        m_ready = bytes.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(m_left, bytes.size())));
    }

    // Valid until the next call; empty at the end.
    std::string_view next() {
        checkInterruption();
        std::string_view bytes = std::exchange(m_ready, {});
        if (bytes.empty() && m_left > 0) {
            bytes = fill(m_left);
        }
        m_left -= bytes.size();
        return bytes;
    }
    std::uint64_t left() const { return m_left; }
    const ZipEntry& entry() const { return m_entry; }

private:
    std::string_view fill(std::uint64_t most) {
        thread_local std::string buffer(bufferSize, '\0');
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(most, buffer.size()));
        if (readAt(m_file, m_offset, buffer.data(), wanted) != wanted) {
            failDamaged();
        }
        m_offset += wanted;
        return {buffer.data(), wanted};
    }

    int m_file;
    std::uint64_t m_offset = 0;
    std::uint64_t m_left;
    const ZipEntry& m_entry;
    std::string_view m_ready;
};

// Counts and sums up what is handed on.
class CheckedSink {
public:
    CheckedSink(const ZipEntry& entry, const std::function<void(std::string_view)>& sink)
        : m_entry(entry), m_sink(sink) {}

    void put(std::string_view bytes) {
        if (bytes.size() > m_entry.size - m_count) {
            failDamaged();
        }
        m_count += bytes.size();
        m_crc = ::crc32_z(m_crc, zlibBytes(bytes.data()), bytes.size());
        m_sink(bytes);
    }
    void finish() const {
        if (m_count != m_entry.size || m_crc != m_entry.crc) {
            failDamaged();
        }
    }

private:
    const ZipEntry& m_entry;
    const std::function<void(std::string_view)>& m_sink;
    std::uint64_t m_count = 0;
    unsigned long m_crc = 0;
};

// A decompressor that is used again for the next entry of its thread: setting one up costs more than a small file.
class Inflater {
public:
    Inflater() {
        if (::inflateInit2(&m_stream, -MAX_WBITS) != Z_OK) {
            throw ToolFailure("no memory to unpack with");
        }
    }
    ~Inflater() { ::inflateEnd(&m_stream); }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;

    void run(PackedBytes& packed, CheckedSink& sink) {
        ::inflateReset(&m_stream);
        m_stream.avail_in = 0;
        for (int state = Z_OK; state != Z_STREAM_END;) {
            if (m_stream.avail_in == 0) {
                const std::string_view piece = packed.next();
                m_stream.next_in = const_cast<Bytef*>(zlibBytes(piece.data()));  // NOLINT: zlib only reads from it
                m_stream.avail_in = static_cast<uInt>(piece.size());
            }
            m_stream.next_out = reinterpret_cast<Bytef*>(m_output.data());
            m_stream.avail_out = static_cast<uInt>(m_output.size());
            const bool hadInput = m_stream.avail_in != 0;
            state = ::inflate(&m_stream, Z_NO_FLUSH);
            const std::size_t made = m_output.size() - m_stream.avail_out;
            const bool goesOn = (state == Z_OK || state == Z_BUF_ERROR) && (hadInput || made != 0);
            if (state != Z_STREAM_END && !goesOn) {
                failDamaged();
            }
            sink.put({m_output.data(), made});
        }
        if (m_stream.avail_in != 0 || packed.left() != 0) {
            failDamaged();
        }
    }

private:
    z_stream m_stream{};
    std::string m_output = std::string(bufferSize, '\0');
};

void copyStored(PackedBytes& packed, CheckedSink& sink) {
    if (packed.entry().packedSize != packed.entry().size) {
        failDamaged();
    }
    while (packed.left() > 0) {
        sink.put(packed.next());
    }
}

}  // namespace

void readZipContents(int file, const ZipEntry& entry, const std::function<void(std::string_view)>& sink) {
    PackedBytes packed(file, entry);
    CheckedSink checked(entry, sink);
    if (entry.method == zip::stored) {
        copyStored(packed, checked);
    } else if (entry.method == zip::deflated) {
        thread_local Inflater inflater;
        inflater.run(packed, checked);
    } else {
        throw ToolFailure("packed by a method that is not supported (" + std::to_string(entry.method) + ")");
    }
    checked.finish();
}

std::string readShortZipContents(int file, const ZipEntry& entry, std::size_t limit) {
    if (entry.size > limit) {
        failDamaged();
    }
    std::string contents;
    readZipContents(file, entry, [&](std::string_view piece) { contents += piece; });
    return contents;
}

bool isKnownZipMethod(const ZipEntry& entry) { return entry.method == zip::stored || entry.method == zip::deflated; }

}  // namespace platform::linux_host
