// When file systems take two names for one.
#pragma once

#include <string>
#include <string_view>

namespace wickfield_bundle {

// Of the letters of ASCII.
inline char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Equal for names that a file system which ignores case and the form of accents takes for one. Bytes that are not
// UTF-8 stay as they are.
std::string foldedName(std::string_view name);

// With accents as characters of their own, the form in which some file systems of a Mac count and compare.
std::string decomposedName(std::string_view name);

}  // namespace wickfield_bundle
