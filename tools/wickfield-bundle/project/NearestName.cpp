#include "tools/wickfield-bundle/project/NearestName.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <numeric>
#include <utility>
#include <vector>

namespace wickfield_bundle {

namespace {

constexpr std::size_t longestName = 64;

std::string inLowerCase(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(),
                           [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
    return lower;
}

// Letters to be put in, taken out or changed, and neighbours to be exchanged.
std::size_t changesBetween(std::string_view left, std::string_view right) {
    std::vector<std::size_t> twoAbove;
    std::vector<std::size_t> above(right.size() + 1);
    std::iota(above.begin(), above.end(), std::size_t{0});
    for (std::size_t i = 1; i <= left.size(); ++i) {
        std::vector<std::size_t> row(right.size() + 1);
        row[0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const bool isSame = left[i - 1] == right[j - 1];
            row[j] = std::min({above[j] + 1, row[j - 1] + 1, above[j - 1] + (isSame ? 0 : 1)});
            if (i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1]) {
                row[j] = std::min(row[j], twoAbove[j - 2] + 1);
            }
        }
        twoAbove = std::exchange(above, std::move(row));
    }
    return above.back();
}

}  // namespace

std::optional<std::string> nearestName(std::string_view name, std::span<const std::string_view> names) {
    if (name.size() > longestName) {
        return std::nullopt;
    }
    const std::string wanted = inLowerCase(name);
    std::optional<std::string> nearest;
    std::size_t fewest = 0;
    for (const std::string_view candidate : names) {
        const std::size_t changes = changesBetween(wanted, inLowerCase(candidate));
        const std::size_t most = std::max<std::size_t>(1, candidate.size() / 3);
        if (changes <= most && (!nearest || changes < fewest)) {
            nearest = candidate;
            fewest = changes;
        }
    }
    return nearest;
}

}  // namespace wickfield_bundle
