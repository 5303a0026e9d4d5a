// Bytes as letters.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/ports/PropertyValue.h"

namespace platform::linux_host {

std::string base64(const PropertyData& data);  // in one line

// Blanks and new lines do not count, and the padding at the end may be missing; none when anything else is amiss.
std::optional<PropertyData> dataFromBase64(std::string_view text);

}  // namespace platform::linux_host
