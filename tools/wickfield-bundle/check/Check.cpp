#include "tools/wickfield-bundle/check/Check.h"

#include <algorithm>
#include <array>
#include <future>
#include <iterator>
#include <span>

#include "app/InstallationTree.h"
#include "lib/base/PathText.h"
#include "lib/base/Text.h"
#include "platform/linux/services/LinuxMainBundle.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/check/ItemWalk.h"
#include "tools/wickfield-bundle/check/Rules.h"
#include "tools/wickfield-bundle/check/SettingsRules.h"

namespace wickfield_bundle {

namespace {

bool isArchiveName(std::string_view path) {
    constexpr std::array<std::string_view, 15> extensions{"zip", "tar", "gz",  "tgz", "bz2", "tbz", "xz",  "txz",
                                                          "zst", "7z",  "rar", "dmg", "pkg", "iso", "cpgz"};
    return std::ranges::find(extensions, kz::lowercased(kz::pathExtension(path))) != extensions.end();
}

const CheckedItem* itemOf(const std::vector<CheckedItem>& items, std::string_view place) {
    const auto after = std::ranges::upper_bound(items, place, comesBefore, &CheckedItem::place);
    if (after == items.begin()) {
        return nullptr;
    }
    const CheckedItem& item = *std::prev(after);
    return item.place == place || liesWithin(place, item.place) ? &item : nullptr;
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

// Two threads take one half each; where there is nothing special they take about the same time.
constexpr std::array someRules{checkNames, checkLinks, checkPermissions, checkTree};
constexpr std::array otherRules{checkReading,      checkLayout,       checkScripts, checkPackages,  checkPrograms,
                                checkPlaceholders, checkDestinations, checkSizes,   checkQuarantine};

Findings run(std::span<void (*const)(const CheckedBundle&, Findings&)> rules, const CheckedBundle& bundle) {
    Findings findings;
    for (const auto rule : rules) {
        rule(bundle, findings);
    }
    return findings;
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

const CheckedItem* CheckedBundle::itemAt(std::string_view place) const { return itemOf(items, place); }

bool CheckedBundle::isPassedOver(std::string_view place) const { return itemOf(passedOver, place) != nullptr; }

bool CheckedBundle::hasItemsIn(std::string_view folder) const {
    const auto first = std::ranges::upper_bound(items, folder, comesBefore, &CheckedItem::place);
    return first != items.end() && liesWithin(first->place, folder);
}

bool isBundle(const std::string& path, std::string& whyNot) {
    auto& files = *platform::host().files;
    if (!files.fileExists(path)) {
        whyNot = "There is nothing of this name.";
    } else if (!files.isFolder(path) && isArchiveName(path)) {
        whyNot = "It is an archive: unpack it first.";
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
    bundle.contents = takeInventory(bundle.path);
    findItems(bundle);
    return bundle;
}

Findings checkBundle(const std::string& path) {
    Findings findings;
    if (std::string whyNot; !isBundle(path, whyNot)) {
        add(findings, "not-a-bundle", "", whyNot);
        return findings;
    }
    const std::string helper = mediaHelper();
    // The name of the program does not matter: only where it would lie.
    platform::linux_host::LinuxMainBundle resources(*platform::host().propertyLists, path + "/Contents/MacOS/-");
    platform::Host host = platform::host();
    host.bundle = &resources;
    const platform::ScopedHost scope(host);

    SettingsCheck settings(helper);  // works on beside the walk
    const CheckedBundle bundle = lookAt(path);
    auto others = std::async(std::launch::async | std::launch::deferred, [&] { return run(someRules, bundle); });
    findings = run(otherRules, bundle);
    std::ranges::move(others.get(), std::back_inserter(findings));
    settings.finish(bundle, findings);
    sort(findings);
    return findings;
}

}  // namespace wickfield_bundle
