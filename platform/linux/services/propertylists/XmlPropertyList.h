// Property lists in their XML form.
#pragma once

#include <string>
#include <string_view>

#include "platform/ports/PropertyValue.h"

namespace platform::linux_host {

// Whether the text begins, after blanks, like XML rather than like the old-style form's data.
bool isXmlPropertyList(std::string_view text);

// UTF-8, without a byte-order mark, whatever the declaration says. Throws Malformed. The "plist" element may be
// missing, and blanks may precede the declaration; all else must be XML 1.0. Of two equal keys the last one counts.
// Entities that a document type declares are not known, and nothing outside of the text is ever loaded.
PropertyValue parseXmlPropertyList(std::string_view text);

// Complete with declaration, document type and a new line at the end. Bytes of strings that are not UTF-8 become
// U+FFFD. Characters that XML has no place for, such as most control characters, are written as the instruction
// <?code-point NUMBER?>, which parseXmlPropertyList understands; other readers may leave them out.
std::string writeXmlPropertyList(const PropertyValue& value);

}  // namespace platform::linux_host
