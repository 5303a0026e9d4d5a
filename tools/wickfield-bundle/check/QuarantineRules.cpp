#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

// Of a folder and what it holds the folder is named.
void checkQuarantine(const CheckedBundle& bundle, Findings& findings) {
    const InventoryEntry* latest = nullptr;
    for (const InventoryEntry& entry : bundle.contents.entries) {
        if (entry.isQuarantined && (latest == nullptr || !liesWithin(entry.path, latest->path))) {
            latest = &entry;
            add(findings, "quarantined", entry.path, "It has the attribute \"com.apple.quarantine\".");
        }
    }
}

}  // namespace wickfield_bundle
