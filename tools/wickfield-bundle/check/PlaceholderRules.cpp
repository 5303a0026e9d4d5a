#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "app/UserPlaceholders.h"
#include "lib/base/Text.h"
#include "tools/wickfield-bundle/check/BuildersPlaces.h"
#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

// The path's first folders; all of it when it has no more.
std::string_view leading(std::string_view path, std::size_t folders) {
    std::size_t end = 0;
    for (std::size_t folder = 0; folder < folders && end < path.size(); ++folder) {
        end = std::min(path.find('/', end + 1), path.size());
    }
    return path.substr(0, end);
}

struct Suspect {
    RuleName rule;
    std::string folder;  // below the tree
    std::string reason;
};

std::optional<Suspect> takenByPrefix(const CheckedItem& item) {
    const auto* const placeholder = UserPlaceholders::placeholderOf(item.path);
    if (placeholder == nullptr) {
        return std::nullopt;
    }
    const std::string_view prefix = placeholder->prefix;
    if (item.path.size() == prefix.size() || item.path[prefix.size()] == '/') {
        return std::nullopt;
    }
    const std::string folder = item.path.substr(0, item.path.find('/', prefix.size()));
    return Suspect{"placeholder-by-prefix", folder,
                   "The name begins with the placeholder \"" + std::string(prefix) + "\" and is taken for it: \"" +
                       item.path + "\" would be put at \"" + item.destination + "\"."};
}

std::optional<Suspect> writtenOtherwise(const CheckedItem& item) {
    const std::string_view two = leading(item.path, 2);
    if (kz::lowercased(two) != "/users/user" || UserPlaceholders::placeholderOf(item.path) != nullptr) {
        return std::nullopt;
    }
    return Suspect{"placeholder-case", std::string(two),
                   "It is not the placeholder \"/Users/user\", but would be the home of somebody called \"" +
                       std::string(two.substr(two.rfind('/') + 1)) + "\"."};
}

std::optional<Suspect> inSomebodysHome(const CheckedItem& item) {
    const std::string_view home = homeIn(item.path);
    if (home.empty() || home == item.path) {
        return std::nullopt;
    }
    return Suspect{"other-home", std::string(home),
                   "What lies here would be put into \"" + std::string(home) + "\" on every customer's disk."};
}

std::optional<Suspect> leftToAShell(const CheckedItem& item) {
    for (std::size_t at = 0; at < item.path.size();) {
        const std::size_t end = std::min(item.path.find('/', at + 1), item.path.size());
        const std::string_view name = std::string_view(item.path).substr(at + 1, end - at - 1);
        static constexpr std::array<std::string_view, 6> names{"~",       "$HOME",  "${HOME}",
                                                               "$(HOME)", "%HOME%", "%USERPROFILE%"};
        if (std::ranges::find(names, name) != names.end()) {
            return Suspect{"placeholder-unknown", item.path.substr(0, end),
                           "A folder \"" + std::string(name) + "\" would be made."};
        }
        at = end;
    }
    return std::nullopt;
}

}  // namespace

void checkPlaceholders(const CheckedBundle& bundle, Findings& findings) {
    std::string latest;  // the place that was named last; what else lies in it is not worth a word of its own
    for (const CheckedItem& item : bundle.items) {
        if (!latest.empty() && liesWithin(item.place, latest)) {
            continue;
        }
        for (const auto look : {takenByPrefix, writtenOtherwise, inSomebodysHome, leftToAShell}) {
            if (const auto suspect = look(item)) {
                latest = bundle.treePrefix + suspect->folder.substr(suspect->folder.starts_with('/') ? 1 : 0);
                add(findings, suspect->rule, latest, suspect->reason);
                break;
            }
        }
    }
}

}  // namespace wickfield_bundle
