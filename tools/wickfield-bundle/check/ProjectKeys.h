// What makers write in place of the settings in a bundle.
#pragma once

#include <string>
#include <string_view>

#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

// As `"agreement" in wickfield.json, or --agreement` for KZEULAPath; "" for a key that no project stands for.
std::string inProject(std::string_view settingsKey);

// The rule's own remedy, and where a project has it.
std::string remedyInProject(RuleName rule, std::string_view settingsKey);

}  // namespace wickfield_bundle
