// Property lists in their binary form.
#pragma once

#include <string_view>

#include "platform/ports/PropertyValue.h"

namespace platform::linux_host {

bool isBinaryPropertyList(std::string_view bytes);

// Throws Malformed. An object that several others name is copied for each of them; one that holds itself is malformed.
// Of two equal keys the last one counts. Null, sets and the references of keyed archives are no property-list values.
PropertyValue parseBinaryPropertyList(std::string_view bytes);

}  // namespace platform::linux_host
