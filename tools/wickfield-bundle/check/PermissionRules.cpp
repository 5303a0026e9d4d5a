#include <string>

#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/ModelCustomer.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

using platform::FileType;

constexpr unsigned setID = 06000;

std::string inDigits(unsigned permissions) {
    std::string digits;
    for (const unsigned shift : {9U, 6U, 3U, 0U}) {
        digits += static_cast<char>('0' + ((permissions >> shift) & 7U));
    }
    return digits;
}

class Rights {
public:
    explicit Rights(const InventoryEntry& entry) : m_permissions(entry.permissions) {
        m_needed = entry.type == FileType::folder ? 5U : 4U;  // into a folder one has to get as well
    }
    bool ownerMayRead() const { return ((m_permissions >> 6U) & m_needed) == m_needed; }
    bool othersMayRead() const { return (m_permissions & m_needed) == m_needed; }
    bool othersMayWrite() const { return (m_permissions & 2U) != 0; }

private:
    unsigned m_permissions;
    unsigned m_needed;
};

void look(const CheckedBundle& bundle, const InventoryEntry& entry, Findings& findings) {
    const Rights rights(entry);
    const std::string mode = "Its mode is " + inDigits(entry.permissions);
    if (!rights.ownerMayRead()) {
        add(findings, "mode-source-unreadable", entry.path, mode + ".");
    }
    if (entry.type == FileType::regular && (entry.permissions & setID) != 0) {
        add(findings, "mode-set-id", entry.path, mode + ".");
    }
    // Folders on the way to an item are made anew, with rights of their own.
    const CheckedItem* const item = bundle.itemAt(entry.path);
    if (item == nullptr || isInModelHome(item->destination)) {
        return;
    }
    const std::string where =
        mode + ", and it is put at \"" + item->destination + std::string(entry.path).substr(item->place.size()) + "\".";
    if (rights.ownerMayRead() && !rights.othersMayRead()) {
        add(findings, "mode-private", entry.path, where);
    }
    if (rights.othersMayWrite()) {
        add(findings, "mode-writable", entry.path, where);
    }
}

}  // namespace

void checkPermissions(const CheckedBundle& bundle, Findings& findings) {
    for (const InventoryEntry& entry : bundle.contents.entries) {
        const bool hasRights = entry.type == FileType::regular || entry.type == FileType::folder;
        if (hasRights && bundle.isInTree(entry.path)) {
            look(bundle, entry, findings);
        }
    }
}

}  // namespace wickfield_bundle
