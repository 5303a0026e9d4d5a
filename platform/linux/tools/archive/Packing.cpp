#include "platform/linux/tools/archive/Packing.h"

#include <zlib.h>

#include <algorithm>
#include <cstddef>
#include <utility>

#include "platform/linux/tools/archive/FileBytes.h"
#include "platform/linux/tools/archive/Interruption.h"
#include "platform/linux/tools/archive/ToolFailure.h"
#include "platform/linux/tools/archive/ZipFormat.h"

namespace platform::linux_host {

namespace {

// Each step ends on a whole byte, which keeps the packed form of zeros above a thousandth of their number: what was
// packed here is never mistaken for an archive that is meant to fill disks.
constexpr std::size_t stepSize = std::size_t{64} * 1024;

const Bytef* zlibBytes(const char* bytes) { return reinterpret_cast<const Bytef*>(bytes); }

std::uint32_t crcOf(std::uint32_t before, std::string_view bytes) {
    return static_cast<std::uint32_t>(::crc32_z(before, zlibBytes(bytes.data()), bytes.size()));
}

// Used again for the next file of its thread: setting one up costs more than a small file.
class Deflater {
public:
    Deflater() {
        constexpr int mostMemory = 8;
        if (::deflateInit2(&m_stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, mostMemory, Z_DEFAULT_STRATEGY) !=
            Z_OK) {
            throw ToolFailure("no memory to pack with");
        }
    }
    ~Deflater() { ::deflateEnd(&m_stream); }
    Deflater(const Deflater&) = delete;
    Deflater& operator=(const Deflater&) = delete;

    void start() { ::deflateReset(&m_stream); }

    // The packed form of the next piece, valid until the next call.
    std::string_view put(std::string_view bytes, bool isLast) {
        m_output.resize(bytes.size() + bytes.size() / 8 + 1024);         // room for what cannot be packed
        m_stream.next_in = const_cast<Bytef*>(zlibBytes(bytes.data()));  // NOLINT: zlib only reads from it
        m_stream.avail_in = static_cast<uInt>(bytes.size());
        m_stream.next_out = reinterpret_cast<Bytef*>(m_output.data());
        m_stream.avail_out = static_cast<uInt>(m_output.size());
        const int state = ::deflate(&m_stream, isLast ? Z_FINISH : Z_SYNC_FLUSH);
        if (state != (isLast ? Z_STREAM_END : Z_OK) || m_stream.avail_in != 0) {
            throw ToolFailure("cannot pack");
        }
        return {m_output.data(), m_output.size() - m_stream.avail_out};
    }

private:
    z_stream m_stream{};
    std::string m_output;
};

Deflater& deflaterOfThread() {
    thread_local Deflater deflater;
    deflater.start();
    return deflater;
}

}  // namespace

PackedFile packSmallFile(int file, std::uint64_t size) {
    checkInterruption();
    PackedFile packed;
    std::string bytes = readAt(file, 0, static_cast<std::size_t>(size));
    packed.sums.crc = crcOf(0, bytes);
    packed.sums.size = bytes.size();
    auto& deflater = deflaterOfThread();
    for (std::string_view rest = bytes; !rest.empty() && packed.bytes.size() < bytes.size();) {
        const std::string_view step = rest.substr(0, stepSize);
        rest.remove_prefix(step.size());
        packed.bytes += deflater.put(step, rest.empty());
    }
    packed.sums.method = zip::deflated;
    if (packed.bytes.size() >= bytes.size()) {
        packed.sums.method = zip::stored;
        packed.bytes = std::move(bytes);
    }
    packed.sums.packedSize = packed.bytes.size();
    return packed;
}

PackedFile keepAsIs(std::string bytes) {
    PackedFile kept;
    kept.sums = {.method = zip::stored, .crc = crcOf(0, bytes), .size = bytes.size(), .packedSize = bytes.size()};
    kept.bytes = std::move(bytes);
    return kept;
}

PackedSums packLargeFile(int file, std::uint64_t size, const std::function<void(std::string_view)>& sink) {
    PackedSums sums{.method = zip::deflated};
    auto& deflater = deflaterOfThread();
    std::string buffer(stepSize, '\0');
    for (bool isLast = false; !isLast;) {
        checkInterruption();
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(size - sums.size, buffer.size()));
        const std::string_view bytes(buffer.data(), readAt(file, sums.size, buffer.data(), wanted));
        sums.crc = crcOf(sums.crc, bytes);
        sums.size += bytes.size();
        isLast = bytes.size() < buffer.size();
        const std::string_view packed = deflater.put(bytes, isLast);
        sums.packedSize += packed.size();
        sink(packed);
    }
    return sums;
}

}  // namespace platform::linux_host
