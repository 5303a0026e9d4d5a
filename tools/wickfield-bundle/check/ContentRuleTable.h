// The rules about what files contain: settings, scripts, plug-in bundles, programs.
#pragma once

#include <array>

#include "tools/wickfield-bundle/check/Rule.h"

namespace wickfield_bundle {

inline constexpr std::array<Rule, 0> contentRuleTable{};

}  // namespace wickfield_bundle
