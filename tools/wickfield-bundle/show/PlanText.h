// Words and figures that the table and the tree have in common.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tools/wickfield-bundle/show/Plan.h"

namespace wickfield_bundle {

std::string_view nameOf(ItemState state);
std::string_view nameOf(ItemKind kind);

std::string counted(std::uint64_t number, const std::string& noun);
std::string sizeText(std::uint64_t bytes);
std::string tintedName(ItemState state);      // in colour on a terminal
std::string noteOn(const PlannedItem& item);  // why it is refused or whom it asks for; "" where there is nothing to say

std::string headText(const Plan& plan, std::size_t columns);  // the plug-in, the home folder, the first script
std::string footText(const Plan& plan, std::size_t columns);  // the last script, what is passed over, the sums

}  // namespace wickfield_bundle
