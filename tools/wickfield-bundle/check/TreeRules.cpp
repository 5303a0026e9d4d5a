#include <algorithm>
#include <array>

#include "app/InstallationTree.h"
#include "lib/base/Text.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

using platform::FileType;

bool isOneOf(std::string_view name, std::span<const std::string_view> names) {
    return std::ranges::find(names, name) != names.end();
}

// Hidden files that nobody misses.
bool isHiddenClutter(std::string_view name) {
    static constexpr std::array<std::string_view, 8> names{".DS_Store",  ".localized",     ".gitkeep",  ".keep",
                                                           ".gitignore", ".gitattributes", ".hgignore", ".directory"};
    return name.starts_with("._") || isOneOf(name, names);
}

// What has no business on a customer's disk, hidden or not.
bool isVisibleClutter(std::string_view name) {
    static constexpr std::array<std::string_view, 10> names{
        "thumbs.db", "ehthumbs.db", "desktop.ini", "__macosx", ".git", ".svn", ".hg", ".bzr", "cvs", ".fseventsd"};
    return isOneOf(kz::lowercased(name), names);
}

// Whether there is a tree to go on with.
bool checkTreeFolder(const CheckedBundle& bundle, Findings& findings) {
    const std::string place = InstallationTree::pathInBundle;
    if (bundle.contents.find(place) == nullptr) {
        add(findings, "tree-missing", place, "There is nothing of this name.");
        return false;
    }
    if (!platform::host().files->isFolder(bundle.fullPath(place))) {
        add(findings, "tree-not-a-folder", place, "It is something else than a folder.");
        return false;
    }
    if (bundle.items.empty()) {
        add(findings, "tree-empty", place, "It has no file that would be installed.");
    }
    if (bundle.isWalkEndless) {
        add(findings, "tree-endless", place,
            "The walk was given up after " + std::to_string(bundle.items.size()) +
                " items, which is far more than the tree has files.");
    }
    return true;
}

void checkSkipped(const CheckedBundle& bundle, Findings& findings) {
    for (const CheckedItem& item : bundle.passedOver) {
        const std::string_view name = std::string_view(item.place).substr(item.place.rfind('/') + 1);
        if (isHiddenClutter(name)) {
            add(findings, "clutter-skipped", item.place, "It stays in the installer.");
        } else {
            add(findings, "hidden-skipped", item.place,
                "Its name begins with \".\", so nothing is put at \"" + item.destination + "\".");
        }
    }
}

class Leftovers {
public:
    Leftovers(const CheckedBundle& bundle, Findings& findings)
        : m_bundle(bundle), m_findings(findings), m_items(bundle) {}

    // In the order of the inventory.
    void look(const InventoryEntry& entry) {
        const CheckedItem* const item = m_items.at(entry.path);
        const bool isInPackage = item != nullptr && item->place != entry.path;
        const bool isInstalled = item != nullptr || (entry.type == FileType::folder && m_bundle.hasItemsIn(entry.path));
        if (entry.type == FileType::folder && !isInstalled) {
            lookAtFolderWithoutItems(entry);
        }
        const bool isClutter = isVisibleClutter(entry.name()) || (isInPackage && isHiddenClutter(entry.name()));
        if (isInstalled && isClutter && !(m_clutter && liesWithin(entry.path, m_clutter->path))) {
            m_clutter = &entry;
            add(m_findings, "clutter-installed", entry.path,
                entry.type == FileType::folder ? "The folder is installed with what it holds." : "It is installed.");
        }
    }

private:
    // Of folders within one another the outermost is named.
    void lookAtFolderWithoutItems(const InventoryEntry& entry) {
        if ((m_empty == nullptr || !liesWithin(entry.path, m_empty->path)) && !m_bundle.isPassedOver(entry.path)) {
            m_empty = &entry;
            add(m_findings, "folder-without-items", entry.path, "No folder is made for it.");
        }
    }

    const CheckedBundle& m_bundle;
    Findings& m_findings;
    ItemCursor m_items;
    const InventoryEntry* m_empty = nullptr;    // the latest that was named
    const InventoryEntry* m_clutter = nullptr;  // the latest that was named
};

}  // namespace

void checkTree(const CheckedBundle& bundle, Findings& findings) {
    for (const InventoryEntry& entry : bundle.contents.entries) {
        if (entry.type == FileType::other) {
            add(findings, "special-file", entry.path, "It is neither a file nor a folder nor a link.");
        }
    }
    if (!checkTreeFolder(bundle, findings)) {
        return;
    }
    for (const CheckedItem& item : bundle.items) {
        if (!item.path.starts_with('/')) {
            add(findings, "tree-top-item", item.place,
                "It would be put into the folder that the installer was started in, as \"" + item.path + "\".");
        }
    }
    checkSkipped(bundle, findings);
    Leftovers leftovers(bundle, findings);
    for (const InventoryEntry& entry : bundle.contents.entries) {
        if (bundle.isInTree(entry.path)) {
            leftovers.look(entry);
        }
    }
}

}  // namespace wickfield_bundle
