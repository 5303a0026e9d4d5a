#include <string>

#include "app/InstallationTree.h"
#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/ModelCustomer.h"
#include "tools/wickfield-bundle/check/PartRights.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

using platform::FileType;

constexpr unsigned setID = 06000;

std::string modeOf(const InventoryEntry& entry) {
    std::string text = "Its mode is ";
    for (const unsigned shift : {9U, 6U, 3U, 0U}) {
        text += static_cast<char>('0' + ((entry.permissions >> shift) & 7U));
    }
    return text;
}

class Rights {
public:
    explicit Rights(const InventoryEntry& entry) : m_permissions(entry.permissions) {
        m_needed = entry.type == FileType::folder ? 5U : 4U;  // into a folder one has to get as well
    }
    bool ownerMayRead() const { return ((m_permissions >> 6U) & m_needed) == m_needed; }
    bool ownerMayWrite() const { return (m_permissions & 0200U) != 0; }
    bool othersMayRead() const { return (m_permissions & m_needed) == m_needed; }
    bool othersMayWrite() const { return (m_permissions & 2U) != 0; }

private:
    unsigned m_permissions;
    unsigned m_needed;
};

void look(const InventoryEntry& entry, const CheckedItem* item, Findings& findings) {
    const Rights rights(entry);
    if (!rights.ownerMayRead()) {
        add(findings, "mode-source-unreadable", entry.path, modeOf(entry) + ".");
    }
    if (entry.type == FileType::regular && (entry.permissions & setID) != 0) {
        add(findings, "mode-set-id", entry.path, modeOf(entry) + ".");
    }
    if (item != nullptr && item->place == entry.path && rights.ownerMayRead() && !rights.ownerMayWrite()) {
        add(findings, "mode-read-only", entry.path, modeOf(entry) + ".");
    }
    // Folders on the way to an item are made anew, with rights of their own.
    if (item == nullptr || isInModelHome(item->destination)) {
        return;
    }
    const auto where = [&] {
        return modeOf(entry) + ", and it is put at \"" + item->destination + entry.path.substr(item->place.size()) +
               "\".";
    };
    if (rights.ownerMayRead() && !rights.othersMayRead()) {
        add(findings, "mode-private", entry.path, where());
    }
    if (rights.othersMayWrite()) {
        add(findings, "mode-writable", entry.path, where());
    }
}

void checkFoldersOfParts(const CheckedBundle& bundle, Findings& findings) {
    checkPartRights(bundle, "Contents", "the installer does not start", findings);
    checkPartRights(bundle, "Contents/Info.plist", "macOS does not start the installer", findings);
    checkPartRights(bundle, "Contents/Linux", "the installer does not start on Linux", findings);
    checkPartRights(bundle, "Contents/MacOS", "the installer does not start on a Mac", findings);
    checkPartRights(bundle, "Contents/Resources", "the installer calls itself damaged", findings);
    checkPartRights(bundle, InstallationTree::pathInBundle, "nothing is installed, and success is reported", findings);
}

}  // namespace

void checkPartRights(const CheckedBundle& bundle, const std::string& place, const std::string& without,
                     Findings& findings) {
    const InventoryEntry* const entry = bundle.contents.find(place);
    if (entry == nullptr || (entry->type != FileType::regular && entry->type != FileType::folder)) {
        return;
    }
    const Rights rights(*entry);
    if (!rights.ownerMayRead()) {
        add(findings, "mode-part-unreadable", place, modeOf(*entry) + ": " + without + ".");
    } else if (!rights.othersMayRead()) {
        add(findings, "mode-part-private", place,
            modeOf(*entry) + ": for other users of the computer " + without + ".");
    }
}

void checkPermissions(const CheckedBundle& bundle, Findings& findings) {
    checkFoldersOfParts(bundle, findings);
    ItemCursor items(bundle);
    for (const InventoryEntry& entry : bundle.contents.entries) {
        const bool hasRights = entry.type == FileType::regular || entry.type == FileType::folder;
        if (hasRights && bundle.isInTree(entry.path)) {
            look(entry, items.at(entry.path), findings);
        }
    }
}

}  // namespace wickfield_bundle
