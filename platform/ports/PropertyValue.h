// A value of a property list.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "platform/ports/Date.h"

namespace platform {

struct PropertyValue;

using PropertyData = std::vector<std::uint8_t>;
using PropertyArray = std::vector<PropertyValue>;
using PropertyDictionary = std::map<std::string, PropertyValue>;

struct PropertyValue {
    std::variant<std::string, std::int64_t, double, bool, Date, PropertyData, PropertyArray, PropertyDictionary> value;

    template <typename Kind>
    const Kind* as() const noexcept {
        return std::get_if<Kind>(&value);
    }
    friend bool operator==(const PropertyValue&, const PropertyValue&) = default;
};

}  // namespace platform
