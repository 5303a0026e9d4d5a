#include "platform/linux/services/propertylists/BinaryPropertyList.h"

#include <bit>
#include <cstdint>
#include <string>

#include "platform/linux/services/propertylists/PropertyListReading.h"
#include "platform/linux/services/propertylists/Unicode.h"

namespace platform::linux_host {

namespace {

constexpr std::string_view magic = "bplist0";
constexpr std::size_t headerSize = 8;  // the magic and one digit of the version
constexpr std::size_t trailerSize = 32;

class Reader {
public:
    explicit Reader(std::string_view bytes) : m_bytes(bytes) {
        if (bytes.size() < headerSize + trailerSize) {
            throw Malformed{"the list is cut short", bytes.size()};
        }
        const std::size_t trailer = bytes.size() - trailerSize;
        m_offsetSize = number(trailer + 6, 1);
        m_referenceSize = number(trailer + 7, 1);
        m_objects = number(trailer + 8, 8);
        m_top = number(trailer + 16, 8);
        m_table = number(trailer + 24, 8);
        if (m_offsetSize < 1 || m_offsetSize > 8 || m_referenceSize < 1 || m_referenceSize > 8 ||
            m_table < headerSize || m_table > trailer || m_objects > (trailer - m_table) / m_offsetSize ||
            m_top >= m_objects) {
            throw Malformed{"the list is cut short or its trailer is damaged", trailer};
        }
    }

    PropertyValue root() { return object(m_top); }

private:
    // Big-endian.
    std::uint64_t number(std::size_t position, std::uint64_t size) const {
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < size; ++i) {
            value = (value << 8U) | static_cast<unsigned char>(m_bytes[position + i]);
        }
        return value;
    }

    // The bytes from the position, all of which lie before the offset table.
    std::string_view span(std::size_t position, std::uint64_t count, std::uint64_t size) const {
        if (position > m_table || count > (m_table - position) / size) {
            throw Malformed{"an object reaches beyond the objects", position};
        }
        return m_bytes.substr(position, count * size);
    }

    std::size_t offset(std::uint64_t index, std::size_t position) const {
        if (index >= m_objects) {
            throw Malformed{"an object that is referred to does not exist", position};
        }
        const std::uint64_t start = number(m_table + index * m_offsetSize, m_offsetSize);
        if (start < headerSize || start >= m_table) {
            throw Malformed{"an object lies outside of the objects", position};
        }
        return start;
    }

    // The number of items or units of the object; moves the position to where its content begins.
    std::uint64_t count(std::size_t& position) const {
        const std::uint64_t inMarker = number(position++, 1) & 0x0FU;
        if (inMarker != 0x0F) {
            return inMarker;
        }
        span(position, 1, 1);
        const std::uint64_t marker = number(position, 1);
        if ((marker & 0xF0U) != 0x10 || (marker & 0x0FU) > 3) {
            throw Malformed{"a count is no integer", position};
        }
        const std::uint64_t size = std::uint64_t{1} << (marker & 0x0FU);
        span(++position, size, 1);
        const std::uint64_t value = number(position, size);
        position += size;
        return value;
    }

    PropertyValue object(std::uint64_t index, std::size_t referredFrom = 0) {
        const std::size_t position = offset(index, referredFrom);
        const Nesting nesting(m_depth, position);
        m_budget.chargeValue(position);
        const std::uint64_t marker = number(position, 1);
        switch (marker >> 4U) {
            case 0x0:
                if (marker == 0x08 || marker == 0x09) {
                    return {marker == 0x09};
                }
                break;
            case 0x1:
                return integer(position, marker & 0x0FU);
            case 0x2:
                return {real(position, marker & 0x0FU)};
            case 0x3:
                if (marker == 0x33) {
                    return {dateFromSecondsSince2001(real(position, 3))};
                }
                break;
            case 0x4:
                return data(position);
            case 0x5:
            case 0x6:
            case 0x7:
                return {string(position, marker >> 4U)};
            case 0xA:
                return array(position);
            case 0xD:
                return dictionary(position);
            default:
                break;
        }
        throw Malformed{"an object is of a kind that no property list holds", position};
    }

    PropertyValue integer(std::size_t position, std::uint64_t power) const {
        if (power > 4) {
            throw Malformed{"an integer has more than 16 bytes", position};
        }
        const std::uint64_t size = std::uint64_t{1} << power;
        span(++position, size, 1);
        if (size <= 8) {
            // Eight bytes carry a sign, fewer do not.
            return {static_cast<std::int64_t>(number(position, size))};
        }
        const std::uint64_t high = number(position, 8);
        const std::uint64_t low = number(position + 8, 8);
        const auto small = static_cast<std::int64_t>(low);
        if (high == (small < 0 ? ~std::uint64_t{0} : 0)) {
            return {small};
        }
        constexpr double twoTo64 = 18446744073709551616.0;
        return {static_cast<double>(static_cast<std::int64_t>(high)) * twoTo64 + static_cast<double>(low)};
    }

    double real(std::size_t position, std::uint64_t power) const {
        if (power != 2 && power != 3) {
            throw Malformed{"a real has neither 4 nor 8 bytes", position};
        }
        const std::uint64_t size = std::uint64_t{1} << power;
        span(++position, size, 1);
        const std::uint64_t bits = number(position, size);
        return size == 8 ? std::bit_cast<double>(bits)
                         : static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
    }

    PropertyValue data(std::size_t position) {
        const std::uint64_t length = count(position);
        const auto bytes = span(position, length, 1);
        m_budget.charge(bytes.size(), position);
        return {PropertyData(bytes.begin(), bytes.end())};
    }

    std::string string(std::size_t position, std::uint64_t kind) {
        const bool isUtf16 = kind == 0x6;
        const std::uint64_t length = count(position);
        const auto bytes = span(position, length, isUtf16 ? 2 : 1);
        m_budget.charge(bytes.size() * (isUtf16 ? 2 : 1), position);
        if (isUtf16) {
            return utf8FromUtf16(bytes, ByteOrder::bigEndian).value_or("");
        }
        if (!isUtf8(bytes)) {
            throw Malformed{"a string is neither ASCII nor UTF-8", position};
        }
        return std::string(bytes);
    }

    std::uint64_t reference(std::string_view references, std::uint64_t index) const {
        const auto start = static_cast<std::size_t>(references.data() - m_bytes.data());
        return number(start + index * m_referenceSize, m_referenceSize);
    }

    PropertyValue array(std::size_t position) {
        const std::uint64_t length = count(position);
        const auto references = span(position, length, m_referenceSize);
        PropertyArray values;
        for (std::uint64_t i = 0; i < length; ++i) {
            values.push_back(object(reference(references, i), position));
        }
        return {std::move(values)};
    }

    PropertyValue dictionary(std::size_t position) {
        const std::uint64_t length = count(position);
        const auto keys = span(position, length, m_referenceSize);
        const auto references = span(position + keys.size(), length, m_referenceSize);
        PropertyDictionary values;
        for (std::uint64_t i = 0; i < length; ++i) {
            const std::size_t key = offset(reference(keys, i), position);
            const std::uint64_t kind = number(key, 1) >> 4U;
            if (kind < 0x5 || kind > 0x7) {
                throw Malformed{"a dictionary's key is no string", key};
            }
            m_budget.chargeValue(key);
            auto name = string(key, kind);
            values.insert_or_assign(std::move(name), object(reference(references, i), position));
        }
        return {std::move(values)};
    }

    std::string_view m_bytes;
    std::uint64_t m_offsetSize = 0;
    std::uint64_t m_referenceSize = 0;
    std::uint64_t m_objects = 0;
    std::uint64_t m_top = 0;
    std::uint64_t m_table = 0;  // the objects lie between the header and this table
    int m_depth = 0;
    MemoryBudget m_budget;
};

}  // namespace

bool isBinaryPropertyList(std::string_view bytes) { return bytes.starts_with(magic); }

PropertyValue parseBinaryPropertyList(std::string_view bytes) { return Reader(bytes).root(); }

}  // namespace platform::linux_host
