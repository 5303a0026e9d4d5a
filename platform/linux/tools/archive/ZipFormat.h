// The bytes of a ZIP archive: signatures, field numbers, and little-endian numbers in a text of bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace platform::linux_host::zip {

constexpr std::uint32_t localSignature = 0x04034b50;
constexpr std::uint32_t centralSignature = 0x02014b50;
constexpr std::uint32_t endSignature = 0x06054b50;
constexpr std::uint32_t wideEndSignature = 0x06064b50;      // with 64-bit numbers
constexpr std::uint32_t wideLocatorSignature = 0x07064b50;  // tells where that one lies

constexpr std::size_t localSize = 30;
constexpr std::size_t centralSize = 46;
constexpr std::size_t endSize = 22;
constexpr std::size_t wideEndSize = 56;
constexpr std::size_t wideLocatorSize = 20;

constexpr std::uint16_t stored = 0;
constexpr std::uint16_t deflated = 8;

constexpr std::uint16_t encryptedFlag = 1U << 0U;
constexpr std::uint16_t utf8Flag = 1U << 11U;

constexpr std::uint16_t wideExtra = 0x0001;
constexpr std::uint16_t timeExtra = 0x5455;
constexpr std::uint16_t nameExtra = 0x7075;

constexpr std::uint8_t unixHost = 3;
constexpr std::uint8_t darwinHost = 19;

constexpr std::uint16_t narrow16 = 0xffff;       // the number stands in the wide form instead
constexpr std::uint32_t narrow32 = 0xffffffffU;  // likewise

// Numbers are read one after another. Reading past the end gives 0 and makes the fields unsound.
class Fields {
public:
    explicit Fields(std::string_view bytes) : m_bytes(bytes) {}  // not owned
    explicit Fields(std::string&&) = delete;

    std::uint8_t u8() { return static_cast<std::uint8_t>(number<1>()); }
    std::uint16_t u16() { return static_cast<std::uint16_t>(number<2>()); }
    std::uint32_t u32() { return static_cast<std::uint32_t>(number<4>()); }
    std::uint64_t u64() { return number<8>(); }
    void skip(std::size_t count) { (void)take(count); }

    // The next bytes; none of them when there are fewer.
    std::string_view take(std::size_t count) {
        if (count > m_bytes.size()) {
            m_sound = false;
            m_bytes = {};
            return {};
        }
        const std::string_view taken = m_bytes.substr(0, count);
        m_bytes.remove_prefix(count);
        return taken;
    }

    std::size_t left() const { return m_bytes.size(); }
    bool sound() const { return m_sound; }

private:
    template <std::size_t size>
    std::uint64_t number() {
        std::uint64_t value = 0;
        unsigned shift = 0;
        for (const char byte : take(size)) {
            value |= std::uint64_t{static_cast<unsigned char>(byte)} << shift;
            shift += 8;
        }
        return value;
    }

    std::string_view m_bytes;
    bool m_sound = true;
};

template <typename Number>
void append(std::string& bytes, Number value) {
    for (unsigned shift = 0; shift < sizeof value * 8; shift += 8) {
        bytes += static_cast<char>(static_cast<unsigned char>(std::uint64_t{value} >> shift));
    }
}

}  // namespace platform::linux_host::zip
