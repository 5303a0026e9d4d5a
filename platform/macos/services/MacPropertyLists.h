#pragma once

#include "platform/ports/PropertyLists.h"

namespace platform::macos {

// Numbers beyond 64 bits with a sign, keyed archives and lists deeper than 512 levels are not read.
class MacPropertyLists : public PropertyLists {
public:
    std::variant<PropertyValue, Error> parse(std::string_view bytes) override;
    std::string serialize(const PropertyValue& value) override;
};

}  // namespace platform::macos
