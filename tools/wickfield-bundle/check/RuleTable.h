// The rules about where things lie and what they are called.
#pragma once

#include <array>

#include "tools/wickfield-bundle/check/Rule.h"

namespace wickfield_bundle {

inline constexpr std::array<Rule, 4> ruleTable{{
    {"not-a-bundle", Severity::error, "There is no installer to check.",
     "Name the installer's folder, whose name ends in \".app\" and which holds a folder \"Contents\"."},
    {"tree-missing", Severity::error,
     "The folder Contents/Resources/PluginStructure is missing: the installer calls itself damaged.",
     "Make the bundle again, with the files that it is to install."},
    {"unreadable", Severity::error, "Something in the bundle cannot be read.",
     "Give yourself the right to read it, or take it out of the bundle."},
    {"too-deep", Severity::error, "A folder lies so deep that no system can open it by its path.",
     "Take it out of the bundle."},
}};

}  // namespace wickfield_bundle
