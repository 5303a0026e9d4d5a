#include "platform/linux/services/propertylists/Unicode.h"

#include <cstdint>
#include <cstring>

namespace platform::linux_host {

namespace {

constexpr char32_t replacementCharacter = 0xFFFD;
constexpr char32_t firstHighSurrogate = 0xD800;
constexpr char32_t firstLowSurrogate = 0xDC00;
constexpr char32_t lastSurrogate = 0xDFFF;
constexpr char32_t firstBeyondUtf16Unit = 0x10000;
constexpr char32_t lastCodePoint = 0x10FFFF;

bool isSurrogate(char32_t value) { return value >= firstHighSurrogate && value <= lastSurrogate; }

char32_t byteAt(std::string_view text, std::size_t index) { return static_cast<unsigned char>(text[index]); }

}  // namespace

std::optional<CodePoint> firstCodePoint(std::string_view utf8) {
    if (utf8.empty()) {
        return std::nullopt;
    }
    const char32_t lead = byteAt(utf8, 0);
    if (lead < 0x80) {
        return CodePoint{lead, 1};
    }
    const std::size_t bytes = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || utf8.size() < bytes) {
        return std::nullopt;
    }
    char32_t value = lead & (0x7FU >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
        if ((byteAt(utf8, i) & 0xC0U) != 0x80U) {
            return std::nullopt;
        }
        value = (value << 6U) | (byteAt(utf8, i) & 0x3FU);
    }
    const char32_t smallest = bytes == 4 ? firstBeyondUtf16Unit : bytes == 3 ? 0x800 : 0x80;
    if (value < smallest || value > lastCodePoint || isSurrogate(value)) {
        return std::nullopt;
    }
    return CodePoint{value, bytes};
}

bool isUtf8(std::string_view text) {
    constexpr std::uint64_t highBits = 0x8080808080808080;
    while (!text.empty()) {
        // Eight ASCII characters at once.
        std::uint64_t eight = highBits;
        if (text.size() >= sizeof eight) {
            std::memcpy(&eight, text.data(), sizeof eight);
        }
        if ((eight & highBits) == 0) {
            text.remove_prefix(sizeof eight);
            continue;
        }
        const auto point = firstCodePoint(text);
        if (!point) {
            return false;
        }
        text.remove_prefix(point->bytes);
    }
    return true;
}

void appendUtf8(std::string& text, char32_t codePoint) {
    if (codePoint > lastCodePoint || isSurrogate(codePoint)) {
        codePoint = replacementCharacter;
    }
    const auto append = [&text](char32_t byte) { text += static_cast<char>(byte); };
    if (codePoint < 0x80) {
        append(codePoint);
        return;
    }
    if (codePoint < 0x800) {
        append(0xC0U | (codePoint >> 6U));
    } else {
        if (codePoint < firstBeyondUtf16Unit) {
            append(0xE0U | (codePoint >> 12U));
        } else {
            append(0xF0U | (codePoint >> 18U));
            append(0x80U | ((codePoint >> 12U) & 0x3FU));
        }
        append(0x80U | ((codePoint >> 6U) & 0x3FU));
    }
    append(0x80U | (codePoint & 0x3FU));
}

std::optional<std::string> utf8FromUtf16(std::string_view bytes, ByteOrder order) {
    if (bytes.size() % 2 != 0) {
        return std::nullopt;
    }
    const auto unitAt = [&](std::size_t index) {
        const char32_t first = byteAt(bytes, index);
        const char32_t second = byteAt(bytes, index + 1);
        return order == ByteOrder::bigEndian ? (first << 8U) | second : (second << 8U) | first;
    };
    std::string text;
    text.reserve(bytes.size());
    for (std::size_t i = 0; i < bytes.size(); i += 2) {
        char32_t value = unitAt(i);
        if (value >= firstHighSurrogate && value < firstLowSurrogate && i + 2 < bytes.size()) {
            const char32_t low = unitAt(i + 2);
            if (low >= firstLowSurrogate && low <= lastSurrogate) {
                value = firstBeyondUtf16Unit + ((value - firstHighSurrogate) << 10U) + (low - firstLowSurrogate);
                i += 2;
            }
        }
        appendUtf8(text, value);
    }
    return text;
}

}  // namespace platform::linux_host
