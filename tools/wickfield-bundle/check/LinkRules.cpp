#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "app/UserPlaceholders.h"
#include "lib/base/PathText.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/check/BuildersPlaces.h"
#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/DestinationIndex.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

using platform::FileType;

// Where a link in the folder leads, as text; none when it climbs higher than the folder's own top. An absolute folder
// gives an absolute path.
std::optional<std::string> resolved(std::string_view folder, std::string_view target) {
    std::vector<std::string> names = kz::pathComponents(folder);
    const std::size_t top = folder.starts_with('/') ? 1 : 0;
    for (const std::string& name : kz::pathComponents(target)) {
        if (name == "..") {
            if (names.size() <= top) {
                return std::nullopt;
            }
            names.pop_back();
        } else if (name != "." && name != "/") {
            names.push_back(name);
        }
    }
    std::string path;
    for (const std::string& name : names) {
        path = kz::appendPathComponent(path, name);
    }
    return path;
}

class LinkCheck {
public:
    LinkCheck(const CheckedBundle& bundle, Findings& findings) : m_bundle(bundle), m_findings(findings) {}

    void look(const InventoryEntry& link) {
        std::error_code error;
        const auto found = std::filesystem::status(m_bundle.fullPath(link.path), error);
        if (error == std::errc::too_many_symbolic_link_levels) {
            say("link-loop", link, "");
            return;
        }
        const bool leadsSomewhere = std::filesystem::exists(found);
        const CheckedItem* const item = m_bundle.itemAt(link.path);
        if (!m_bundle.isInTree(link.path)) {
            lookAtOwnPart(link, leadsSomewhere);
        } else if (item != nullptr && item->place != link.path) {
            lookWithinPackage(link, *item, leadsSomewhere);
        } else if (item != nullptr) {
            lookAtItem(link, *item);
        } else if (std::filesystem::is_directory(found)) {
            lookAtFolder(link);
        }
    }

private:
    void say(RuleName rule, const InventoryEntry& link, const std::string& what) {
        add(m_findings, rule, link.path, "It leads to \"" + link.linkTarget + "\"" + what + ".");
    }

    bool isAbsolute(const InventoryEntry& link) const { return link.linkTarget.starts_with('/'); }

    bool leadsToBuilder(const InventoryEntry& link) const {
        return isAbsolute(link) && (isBuildersPlace(link.linkTarget) || link.linkTarget == m_bundle.path ||
                                    liesWithin(link.linkTarget, m_bundle.path));
    }

    // From the bundle's folder; none when it is led out of the bundle.
    std::optional<std::string> placeOfTarget(const InventoryEntry& link) const {
        return isAbsolute(link) ? std::nullopt : resolved(kz::deletingLastPathComponent(link.path), link.linkTarget);
    }

    void lookAtOwnPart(const InventoryEntry& link, bool leadsSomewhere) {
        if (leadsToBuilder(link)) {
            say("link-to-builder", link, "");
        } else if (!placeOfTarget(link)) {
            say("link-leaves-bundle", link, ", which is not in the bundle");
        } else if (!leadsSomewhere) {
            say("link-dangling", link, ", where nothing lies");
        }
    }

    void lookWithinPackage(const InventoryEntry& link, const CheckedItem& package, bool leadsSomewhere) {
        const auto place = placeOfTarget(link);
        if (leadsToBuilder(link)) {
            say("link-to-builder", link, "");
        } else if (!place || (*place != package.place && !liesWithin(*place, package.place))) {
            say("link-leaves-package", link, ", which is not in \"" + kz::lastPathComponent(package.place) + "\"");
        } else if (!leadsSomewhere) {
            say("link-dangling-in-package", link, ", where nothing lies");
        }
    }

    // A link that is installed as such. The installer waits until its destination can be seen through it.
    void lookAtItem(const InventoryEntry& link, const CheckedItem& item) {
        const std::string folder = kz::deletingLastPathComponent(item.destination);
        if (isAbsolute(link) && UserPlaceholders::placeholderOf(link.linkTarget) != nullptr) {
            say("link-dangling", link, "; in links the placeholder is not replaced");
        } else if (leadsToBuilder(link)) {
            say("link-to-builder", link, "");
        } else if (!isAbsolute(link) && !resolved(kz::deletingLastPathComponent(item.path), link.linkTarget)) {
            say("link-leaves-tree", link, ", which is above the top of the disk");
        } else if (const auto target = resolved(isAbsolute(link) ? "/" : folder, link.linkTarget)) {
            lookAtInstalledTarget(link, folder, *target);
        }
    }

    void lookAtInstalledTarget(const InventoryEntry& link, const std::string& folder, const std::string& target) {
        if (target == folder || target == "/" || liesWithin(folder, target)) {
            return;  // the folders above a link are made before it
        }
        if (!m_destinations) {
            m_destinations.emplace(m_bundle);
        }
        const CheckedItem* const holder = m_destinations->holding(target);
        if (holder != nullptr && holder->place == link.path) {
            say("link-loop", link, "");
        } else if (isInstalled(holder, target)) {
            say("link-order", link, ", that is to \"" + target + "\", which is installed in its own turn");
        } else if (holder == nullptr && isAbsolute(link)) {
            say("link-outside", link, ", which is not installed");
        } else {
            say("link-dangling", link, ", that is to \"" + target + "\", where nothing is installed");
        }
    }

    bool isInstalled(const CheckedItem* holder, const std::string& target) const {
        if (holder == nullptr) {
            return m_destinations->hasItemsIn(target);
        }
        const std::string within = target.substr(holder->destination.size());
        return within.empty() || m_bundle.contents.find(holder->place + within) != nullptr;
    }

    // A link to a folder is walked into. One in the bundle, if not in the tree, is there on a customer's disk as well.
    void lookAtFolder(const InventoryEntry& link) {
        if (leadsToBuilder(link)) {
            say("link-to-builder", link, "");
        } else if (placeOfTarget(link)) {
            say("link-followed", link, "; what is in there is installed in its place");
        } else {
            say("link-folder-outside", link, ", which is not in the bundle");
        }
    }

    const CheckedBundle& m_bundle;
    Findings& m_findings;
    std::optional<DestinationIndex> m_destinations;  // made for the first link that asks
};

}  // namespace

void checkLinks(const CheckedBundle& bundle, Findings& findings) {
    LinkCheck check(bundle, findings);
    for (const InventoryEntry& entry : bundle.contents.entries) {
        if (entry.type == FileType::symbolicLink) {
            check.look(entry);
        }
    }
}

}  // namespace wickfield_bundle
