// UTF-8 text by the platform's rules. Bytes that are not UTF-8 are kept, and count one unit each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kz {

bool isASCII(std::string_view text);
bool isUTF8(std::string_view text);  // all of it valid characters; an empty text is

std::size_t lengthInUTF16(std::string_view text);                   // the platform's count of characters
std::string_view trimWhitespaceAndNewlines(std::string_view text);  // Unicode white space included
std::string lowercased(std::string_view text);                      // Unicode simple lower-casing, in any locale

// Replaces from left to right without looking again at what was put in; an empty `find` finds nothing.
std::string replaceAll(std::string_view text, std::string_view find, std::string_view replacement);

// The character that a text begins with, and the bytes that it takes. A byte that begins no valid character stands for
// itself: one byte, not valid. The text must not be empty.
struct DecodedCharacter {
    std::uint32_t codePoint = 0;
    std::size_t bytes = 1;
    bool valid = false;
};
DecodedCharacter decodeCharacter(std::string_view text);

// Appends a code point as UTF-8; one that is none (a surrogate, beyond U+10FFFF) becomes U+FFFD.
void appendCharacter(std::string& text, std::uint32_t codePoint);

}  // namespace kz
