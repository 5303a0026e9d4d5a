// UTF-8 text by the platform's rules. Bytes that are not UTF-8 are kept, and count one unit each.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kz {

std::size_t lengthInUTF16(std::string_view text);                   // the platform's count of characters
std::string_view trimWhitespaceAndNewlines(std::string_view text);  // Unicode white space included
std::string lowercased(std::string_view text);                      // Unicode simple lower-casing
std::string replaceAll(std::string_view text, std::string_view find, std::string_view replacement);

}  // namespace kz
