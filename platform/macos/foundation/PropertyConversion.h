// Values of property lists between C++ and Foundation.
#pragma once

#import <Foundation/Foundation.h>

#include <optional>

#include "platform/ports/PropertyValue.h"

namespace platform::macos {

// Autoreleased.
id toNS(const PropertyValue& value);

// None for nil, for objects that no property list holds, for keys that are no texts, for numbers beyond 64 bits with a
// sign, and below 512 levels.
std::optional<PropertyValue> valueFromNS(id object);

}  // namespace platform::macos
