// Bytes that a tool printed, as text.
#pragma once

#include <optional>
#include <string>

#include "lib/KZTaskEx.h"

namespace kz {

// UTF-8. None when the bytes are not in that encoding; an encoding that is not known decodes nothing.
std::optional<std::string> decode(std::string bytes, StringEncoding encoding);

}  // namespace kz
