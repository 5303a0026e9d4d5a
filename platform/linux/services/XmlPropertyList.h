// Property lists in their XML form.
#pragma once

#include <string>
#include <string_view>

#include "platform/ports/PropertyValue.h"

namespace platform::linux_host {

// Whether the text begins, after blanks, like XML rather than like the old-style form's data.
bool isXmlPropertyList(std::string_view text);

// UTF-8, without a byte-order mark. Throws Malformed. The "plist" element may be missing. Of two equal keys the last
// one counts. A document type is skipped; entities that it declares are not known.
PropertyValue parseXmlPropertyList(std::string_view text);

// Complete with declaration, document type and a new line at the end. Bytes of strings that are not UTF-8 become
// U+FFFD.
std::string writeXmlPropertyList(const PropertyValue& value);

}  // namespace platform::linux_host
