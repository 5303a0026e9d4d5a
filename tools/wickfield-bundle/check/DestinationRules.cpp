#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "lib/base/PathText.h"
#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/NameFolding.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

std::string_view firstFolder(std::string_view path) { return path.substr(0, path.find('/', 1)); }

bool isAtOrIn(std::string_view path, std::string_view folder) { return path == folder || liesWithin(path, folder); }

bool isTemporary(std::string_view path) {
    static constexpr std::array<std::string_view, 6> folders{
        "/tmp", "/private/tmp", "/var/tmp", "/private/var/tmp", "/var/folders", "/private/var/folders"};
    return std::ranges::any_of(folders, [&](std::string_view folder) { return isAtOrIn(path, folder); });
}

// What lies at the top of a Mac's disk and can hold something new.
bool isFolderOfAMac(std::string_view folder) {
    static constexpr std::array<std::string_view, 13> folders{
        "/Applications", "/Library", "/Users", "/Volumes", "/System",  "/bin", "/sbin",
        "/usr",          "/var",     "/etc",   "/tmp",     "/private", "/opt"};
    return std::ranges::find(folders, folder) != folders.end();
}

// The first rule that a destination breaks says all that there is to say about it.
void look(const CheckedItem& item, Findings& findings) {
    const std::string& destination = item.destination;
    const auto say = [&](RuleName rule, const std::string& where) {
        add(findings, rule, item.place, "It is put at \"" + destination + "\"" + where);
    };
    if (!destination.starts_with('/')) {
        return;
    }
    if (item.guard == CheckedItem::Guard::standardFolder) {
        say("destination-refused", ", which is a folder of the system itself.");
    } else if (isTemporary(destination)) {
        say("destination-temporary", ".");
    } else if (item.guard == CheckedItem::Guard::systemFolder) {
        say("destination-system", ", among the system's own files.");
    } else if (destination.starts_with("/Volumes/")) {
        say("destination-volume", ".");
    } else if (const std::string_view folder = firstFolder(destination); !isFolderOfAMac(folder)) {
        say("destination-root", ", and a Mac has no folder \"" + std::string(folder) + "\".");
    }
}

// A folder's names that differ in case alone are another rule's.
bool lieInOneFolder(const CheckedItem& item, const CheckedItem& other) {
    return kz::deletingLastPathComponent(item.place) == kz::deletingLastPathComponent(other.place);
}

void checkCollisions(const CheckedBundle& bundle, Findings& findings) {
    std::vector<std::pair<std::string, const CheckedItem*>> items;
    items.reserve(bundle.items.size());
    for (const CheckedItem& item : bundle.items) {
        items.emplace_back(foldedName(item.destination), &item);
    }
    const auto inOrder = [](const auto& left, const auto& right) { return comesBefore(left.first, right.first); };
    if (!std::ranges::is_sorted(items, inOrder)) {
        std::ranges::stable_sort(items, inOrder);
    }
    std::size_t holder = 0;  // the latest that is in no other
    for (std::size_t index = 1; index < items.size(); ++index) {
        const auto& [destination, item] = items[index];
        const CheckedItem& other = *items[holder].second;
        if (!isAtOrIn(destination, items[holder].first)) {
            holder = index;
        } else if (!lieInOneFolder(*item, other)) {
            add(findings, "destination-collision", item->place,
                "It is put at \"" + item->destination + "\", and \"" + other.place + "\" at \"" + other.destination +
                    "\".");
        }
    }
}

}  // namespace

void checkDestinations(const CheckedBundle& bundle, Findings& findings) {
    for (const CheckedItem& item : bundle.items) {
        look(item, findings);
    }
    checkCollisions(bundle, findings);
}

}  // namespace wickfield_bundle
