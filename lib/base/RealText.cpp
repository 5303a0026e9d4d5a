#include "lib/base/RealText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace kz {

namespace {

constexpr int mostDigits = 17;  // as many tell any two reals apart

// What printf makes of a real with one of its formats; the point is that of the locale.
std::string printed(const char* format, double number, int decimals) {
    std::string text(32, '\0');
    auto size = static_cast<std::size_t>(std::snprintf(text.data(), text.size() + 1, format, decimals, number));
    if (size > text.size()) {
        text.resize(size);
        std::snprintf(text.data(), size + 1, format, decimals, number);
    }
    text.resize(size);
    return text;
}

// Puts a point in place of the locale's own, which may be several bytes and stands between digits.
void usePoint(std::string& text) {
    const auto isDigit = [](char byte) { return byte >= '0' && byte <= '9'; };
    const auto whole = std::find_if(text.begin(), text.end(), isDigit);
    const auto point = std::find_if_not(whole, text.end(), isDigit);
    if (point != text.end() && *point != 'e') {
        const auto fraction = std::find_if(point, text.end(), isDigit);
        *point = '.';
        text.erase(point + 1, fraction);
    }
}

}  // namespace

std::string fixedReal(double number, int decimals) {
    std::string text = printed("%.*f", number, decimals);
    usePoint(text);
    return text;
}

std::string shortestReal(double number) {
    if (!std::isfinite(number)) {
        return fixedReal(number, 0);
    }
    std::string scientific;
    int decimals = 0;
    do {
        scientific = printed("%.*e", number, decimals);
    } while (std::strtod(scientific.c_str(), nullptr) != number && ++decimals < mostDigits);
    usePoint(scientific);

    const int exponent = std::atoi(scientific.c_str() + scientific.find('e') + 1);
    std::string fixed = fixedReal(number, std::max(0, decimals - exponent));
    return fixed.size() <= scientific.size() ? fixed : scientific;
}

}  // namespace kz
