#include "tools/wickfield-bundle/check/Check.h"

#include <algorithm>
#include <tuple>

#include "app/InstallationTree.h"
#include "app/UserPlaceholders.h"
#include "lib/base/PathText.h"
#include "platform/linux/services/LinuxMainBundle.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/check/ModelCustomer.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

constexpr std::size_t enoughVisits = 100000;  // of folders and items, for most trees

CheckedItem checkedItem(const InstallationTree::Item& item, const std::string& bundlePath) {
    return {.place = item.source.substr(bundlePath.size() + 1),
            .path = item.path,
            .destination = UserPlaceholders::replaced(item.path).value_or(item.path)};
}

// False when the visits do not suffice.
bool walkTree(CheckedBundle& bundle, std::size_t visits) {
    const platform::ScopedHost scope(hostOfModelCustomer());
    const std::string tree = kz::appendPathComponent(bundle.path, InstallationTree::pathInBundle);
    bundle.items.clear();
    bundle.passedOver.clear();
    const auto spend = [&] { return visits > 0 && --visits > 0; };
    InstallationTree::visitItems(
        tree, tree,
        [&](const InstallationTree::Item& item) {
            bundle.items.push_back(checkedItem(item, bundle.path));
            return spend();
        },
        [&](const InstallationTree::Item& item) {
            if (spend()) {
                bundle.passedOver.push_back(checkedItem(item, bundle.path));
            }
        },
        [&](const std::string&) { return spend(); });
    return visits > 0;
}

void checkReading(const CheckedBundle& bundle, Findings& findings) {
    for (const auto& [path, reason] : bundle.contents.unreadable) {
        add(findings, "unreadable", path, "It cannot be looked at: " + reason + ".");
    }
    for (const std::string& path : bundle.contents.tooDeep) {
        add(findings, "too-deep", path,
            "Its path has " + std::to_string(path.size()) + " bytes; nothing that lies in it was looked at.");
    }
}

void sort(Findings& findings) {
    std::ranges::stable_sort(findings, [](const Finding& left, const Finding& right) {
        if (left.severity != right.severity) {
            return left.severity > right.severity;
        }
        return left.place != right.place ? comesBefore(left.place, right.place) : left.rule < right.rule;
    });
}

}  // namespace

const CheckedItem* CheckedBundle::itemAt(std::string_view place) const {
    const auto after = std::ranges::upper_bound(items, place, comesBefore, &CheckedItem::place);
    if (after == items.begin()) {
        return nullptr;
    }
    const CheckedItem& item = *std::prev(after);
    return item.place == place || liesWithin(place, item.place) ? &item : nullptr;
}

bool CheckedBundle::hasItemsIn(std::string_view folder) const {
    const auto first = std::ranges::upper_bound(items, folder, comesBefore, &CheckedItem::place);
    return first != items.end() && liesWithin(first->place, folder);
}

bool isBundle(const std::string& path, std::string& whyNot) {
    auto& files = *platform::host().files;
    if (!files.fileExists(path)) {
        whyNot = "There is nothing of this name.";
    } else if (!files.isFolder(path)) {
        whyNot = "It is not a folder.";
    } else if (!path.ends_with(".app")) {
        whyNot = "Its name does not end in \".app\".";
    } else if (!files.isFolder(path + "/Contents")) {
        whyNot = "It has no folder \"Contents\".";
    } else {
        whyNot.clear();
    }
    return whyNot.empty();
}

CheckedBundle lookAt(const std::string& path) {
    CheckedBundle bundle{.path = kz::appendPathComponent(path, ""),
                         .contents = {},
                         .treePrefix = InstallationTree::pathInBundle + std::string("/"),
                         .resourcesPrefix = "Contents/Resources/",
                         .items = {},
                         .passedOver = {}};
    auto contents = startInventory(bundle.path);
    bool isComplete = walkTree(bundle, enoughVisits);
    bundle.contents = contents.get();
    // Without links the walk sees less than the inventory; with them not many times as much, unless it goes in circles.
    if (const std::size_t most = 8 * bundle.contents.entries.size(); !isComplete && most > enoughVisits) {
        isComplete = walkTree(bundle, most);
    }
    bundle.isWalkEndless = !isComplete;
    std::ranges::sort(bundle.items, comesBefore, &CheckedItem::place);
    std::ranges::sort(bundle.passedOver, comesBefore, &CheckedItem::place);
    return bundle;
}

Findings checkBundle(const std::string& path) {
    Findings findings;
    if (std::string whyNot; !isBundle(path, whyNot)) {
        add(findings, "not-a-bundle", "", whyNot);
        return findings;
    }
    // The name of the program does not matter: only where it would lie.
    platform::linux_host::LinuxMainBundle resources(*platform::host().propertyLists, path + "/Contents/MacOS/-");
    platform::Host host = platform::host();
    host.bundle = &resources;
    const platform::ScopedHost scope(host);

    const CheckedBundle bundle = lookAt(path);
    for (const auto check : {checkReading, checkLayout, checkTree, checkPlaceholders, checkPermissions, checkLinks,
                             checkNames, checkDestinations, checkSizes, checkQuarantine, checkScripts, checkPrograms}) {
        check(bundle, findings);
    }
    sort(findings);
    return findings;
}

}  // namespace wickfield_bundle
