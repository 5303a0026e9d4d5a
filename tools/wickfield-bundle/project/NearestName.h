// What somebody may have meant by a name that is not known.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace wickfield_bundle {

// The one of the names that it takes the fewest changes of a letter to get to, in whatever case; none when all are too
// different to be meant. Long names are not compared.
std::optional<std::string> nearestName(std::string_view name, std::span<const std::string_view> names);

}  // namespace wickfield_bundle
