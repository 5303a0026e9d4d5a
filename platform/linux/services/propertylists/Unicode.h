// Between code points, UTF-8 and UTF-16.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace platform::linux_host {

struct CodePoint {
    char32_t value = 0;
    std::size_t bytes = 0;
};

// The first code point of the text; none when the text is empty or does not begin with well-formed UTF-8 (overlong
// forms and surrogates are not).
std::optional<CodePoint> firstCodePoint(std::string_view utf8);
bool isUtf8(std::string_view text);

// A value that is no code point becomes U+FFFD.
void appendUtf8(std::string& text, char32_t codePoint);

enum class ByteOrder { bigEndian, littleEndian };
// Lone surrogates become U+FFFD; none when the number of bytes is odd.
std::optional<std::string> utf8FromUtf16(std::string_view bytes, ByteOrder order);

}  // namespace platform::linux_host
