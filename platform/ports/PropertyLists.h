// Reading and writing property lists. Any thread; nothing throws.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "platform/ports/Error.h"
#include "platform/ports/PropertyValue.h"

namespace platform {

class PropertyLists {
public:
    virtual ~PropertyLists() = default;

    // XML, binary or old-style text, with or without a byte-order mark, UTF-8 or UTF-16.
    virtual std::variant<PropertyValue, Error> parse(std::string_view bytes) = 0;

    // As XML.
    virtual std::string serialize(const PropertyValue& value) = 0;
};

}  // namespace platform
