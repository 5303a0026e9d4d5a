// Reals as text, with a point in every locale. The standard library's own way to it is missing from macOS before 13.3.
#pragma once

#include <string>

namespace kz {

// With so many digits after the point, rounded; "inf", "-inf", "nan" or "-nan" for what is no number.
std::string fixedReal(double number, int decimals);

// The fewest digits that read back as the same number: "0.1", or "1e+23" where that is the shorter way to write it.
std::string shortestReal(double number);

}  // namespace kz
