#include "tools/wickfield-bundle/check/BuildersPlaces.h"

#include <algorithm>
#include <array>

#include "app/UserPlaceholders.h"
#include "tools/wickfield-bundle/check/Inventory.h"

namespace wickfield_bundle {

std::string_view homeIn(std::string_view path) {
    if (UserPlaceholders::placeholderOf(path) != nullptr || path == "/Users/Shared" ||
        liesWithin(path, "/Users/Shared")) {
        return {};
    }
    for (const std::string_view home : {"/root", "/var/root", "/private/var/root"}) {
        if (path == home || liesWithin(path, home)) {
            return path.substr(0, home.size());
        }
    }
    for (const std::string_view homes : {"/Users", "/home", "/export/home"}) {
        if (liesWithin(path, homes)) {
            return path.substr(0, path.find('/', homes.size() + 1));
        }
    }
    return {};
}

bool isBuildersPlace(std::string_view path) {
    static constexpr std::array<std::string_view, 9> folders{"/tmp",         "/private/tmp",         "/var/tmp",
                                                             "/var/folders", "/private/var/folders", "/builds",
                                                             "/github",      "/workspace",           "/__w"};
    return !homeIn(path).empty() || std::ranges::any_of(folders, [&](std::string_view folder) {
        return path == folder || liesWithin(path, folder);
    });
}

}  // namespace wickfield_bundle
