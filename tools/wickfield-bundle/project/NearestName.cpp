#include "tools/wickfield-bundle/project/NearestName.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <numeric>
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

// Letters to be put in, taken out or changed.
std::size_t changesBetween(std::string_view left, std::string_view right) {
    std::vector<std::size_t> row(right.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= left.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= right.size(); ++j) {
            const std::size_t changed = diagonal + (left[i - 1] == right[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({row[j] + 1, row[j - 1] + 1, changed});
        }
    }
    return row.back();
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
