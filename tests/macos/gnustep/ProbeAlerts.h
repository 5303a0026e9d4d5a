// The alerts that the probe shows, and what they were answered.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/ports/Controls.h"

namespace probe {

// False for a kind that there is none of.
bool show(const std::string& where, const std::string& kind, platform::Window& parent);

void remember(const std::string& what, long code);
std::vector<std::pair<std::string, long>> answers();

}  // namespace probe
