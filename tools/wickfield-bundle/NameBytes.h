// Names that are no text, for programs that read a report.
#pragma once

#include <string>
#include <string_view>

namespace wickfield_bundle {

std::string hexadecimal(std::string_view bytes);  // two lower-case digits a byte

}  // namespace wickfield_bundle
