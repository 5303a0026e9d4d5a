// Property lists in their old text form, and the lists of "key = value;" pairs without braces that hold localised
// texts.
#pragma once

#include <string_view>

#include "platform/ports/PropertyValue.h"

namespace platform::linux_host {

// UTF-8, without a byte-order mark. Throws Malformed. Every scalar is a string or data. Text of nothing but blanks and
// comments is an empty dictionary; a pair without "= value" has its key as its value; of two equal keys the last one
// counts. Octal escapes of 128 and above are of the form's own 8-bit character set.
PropertyValue parseOldStylePropertyList(std::string_view text);

}  // namespace platform::linux_host
