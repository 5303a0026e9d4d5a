// The application's own preferences of the user who runs it. Any thread; nothing throws.
#pragma once

#include <optional>
#include <string>

#include "platform/ports/Error.h"
#include "platform/ports/PropertyValue.h"

namespace platform {

class UserDefaults {
public:
    virtual ~UserDefaults() = default;
    virtual std::optional<PropertyValue> value(const std::string& key) = 0;
    virtual Failure setValue(const std::string& key, const PropertyValue& value) = 0;
};

}  // namespace platform
