#pragma once

#include "platform/ports/UserDefaults.h"

namespace platform::macos {

// The standard user defaults: a value may also come from the command line, from defaults of all programs or from an
// administrator's profile. Set values reach the disk a little later, by the host's own service.
class MacUserDefaults : public UserDefaults {
public:
    std::optional<PropertyValue> value(const std::string& key) override;
    Failure setValue(const std::string& key, const PropertyValue& value) override;
};

}  // namespace platform::macos
