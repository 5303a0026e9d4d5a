#include "platform/linux/tools/archive/ZipContents.h"

#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "platform/linux/tools/archive/FileBytes.h"
#include "platform/linux/tools/archive/Interruption.h"
#include "platform/linux/tools/archive/ToolFailure.h"
#include "platform/linux/tools/archive/ZipFormat.h"

namespace platform::linux_host {

namespace {

constexpr std::size_t bufferSize = std::size_t{256} * 1024;

[[noreturn]] void failDamaged() { throw ToolFailure("damaged"); }

Bytef* zlibBytes(char* bytes) { return reinterpret_cast<Bytef*>(bytes); }

// The packed bytes of an entry, one buffer after another.
class PackedBytes {
public:
    PackedBytes(int file, const ZipEntry& entry) : m_file(file), m_left(entry.packedSize), m_entry(entry) {
        const std::string header = readAt(file, entry.header, zip::localSize + entry.headerName.size());
        zip::Fields fields(header);
        const bool isHeader = fields.u32() == zip::localSignature;
        fields.skip(2);
        const bool isEncrypted = (fields.u16() & zip::encryptedFlag) != 0;
        const std::uint16_t method = fields.u16();
        fields.skip(16);
        const std::uint16_t nameLength = fields.u16();
        const std::uint16_t extraLength = fields.u16();
        const std::uint64_t fixed = zip::localSize + entry.headerName.size() + extraLength;
        if (!isHeader || isEncrypted || method != entry.method || nameLength != entry.headerName.size() ||
            fields.take(nameLength) != entry.headerName || !fields.sound() || fixed > entry.room ||
            entry.packedSize > entry.room - fixed) {
            failDamaged();
        }
        m_offset = entry.header + fixed;
    }

    // Empty at the end.
    std::string_view next(std::string& buffer) {
        checkInterruption();
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(m_left, buffer.size()));
        if (readAt(m_file, m_offset, buffer.data(), wanted) != wanted) {
            failDamaged();
        }
        m_offset += wanted;
        m_left -= wanted;
        return {buffer.data(), wanted};
    }
    std::uint64_t left() const { return m_left; }
    const ZipEntry& entry() const { return m_entry; }

private:
    int m_file;
    std::uint64_t m_offset = 0;
    std::uint64_t m_left;
    const ZipEntry& m_entry;
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
        m_crc = ::crc32_z(m_crc, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
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
                const std::string_view piece = packed.next(m_input);
                m_stream.next_in = zlibBytes(m_input.data());
                m_stream.avail_in = static_cast<uInt>(piece.size());
            }
            m_stream.next_out = zlibBytes(m_output.data());
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
    std::string m_input = std::string(bufferSize, '\0');
    std::string m_output = std::string(bufferSize, '\0');
};

void copyStored(PackedBytes& packed, CheckedSink& sink) {
    thread_local std::string buffer(bufferSize, '\0');
    if (packed.entry().packedSize != packed.entry().size) {
        failDamaged();
    }
    while (packed.left() > 0) {
        sink.put(packed.next(buffer));
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
