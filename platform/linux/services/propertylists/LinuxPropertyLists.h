// Property lists in their three forms, told apart by what they begin with.
#pragma once

#include "platform/ports/PropertyLists.h"

namespace platform::linux_host {

class LinuxPropertyLists : public PropertyLists {
public:
    std::variant<PropertyValue, Error> parse(std::string_view bytes) override;
    std::string serialize(const PropertyValue& value) override;
};

}  // namespace platform::linux_host
