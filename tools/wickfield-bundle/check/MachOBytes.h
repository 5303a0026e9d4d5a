// Numbers in the headers of code for macOS.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace wickfield_bundle {

enum class ByteOrder { little, big };

// What lies behind the end reads as 0: whoever wants to know asks for the size first. Borrows the bytes.
class MachOBytes {
public:
    MachOBytes(std::string_view bytes, ByteOrder order) : m_bytes(bytes), m_order(order) {}

    std::size_t size() const { return m_bytes.size(); }

    std::uint32_t number32(std::size_t offset) const { return static_cast<std::uint32_t>(number(offset, 4)); }
    std::uint64_t number64(std::size_t offset) const { return number(offset, 8); }

private:
    std::uint64_t number(std::size_t offset, std::size_t size) const {
        if (offset > m_bytes.size() || size > m_bytes.size() - offset) {
            return 0;
        }
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size; ++i) {
            const std::size_t at = m_order == ByteOrder::big ? i : size - 1 - i;
            value = (value << 8U) | static_cast<unsigned char>(m_bytes[offset + at]);
        }
        return value;
    }

    std::string_view m_bytes;
    ByteOrder m_order;
};

// What code for one processor begins with; none for anything else.
struct MachOMagic {
    ByteOrder order = ByteOrder::little;
    bool has64Bits = true;
};
std::optional<MachOMagic> machOMagic(std::string_view bytes);

}  // namespace wickfield_bundle
