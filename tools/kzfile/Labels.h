// The seven colour labels by their names.
#pragma once

#include <optional>
#include <string>

namespace kzfile {

// By name, "none" among them, or number; none for anything else.
std::optional<long> labelNamed(const std::string& text);

// "red", with a patch of that colour where there is colour.
std::string labelText(long label);

}  // namespace kzfile
