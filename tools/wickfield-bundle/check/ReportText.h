// Paragraphs for a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace wickfield_bundle {

// What the text takes on a terminal: wide characters two columns, combining ones none.
std::size_t columnsOf(std::string_view text);

// Lines behind as many blanks as `indent`, broken at blanks so that none passes `columns` (0: no limit) unless a word
// is longer than that. Ends with a line break.
std::string paragraph(std::string_view text, std::size_t indent, std::size_t columns);

}  // namespace wickfield_bundle
