#include <cstdint>
#include <string>

#include "app/InstallationTree.h"
#include "lib/KZFileManager.h"
#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

using platform::FileType;

constexpr std::uint64_t huge = (std::uint64_t{1} << 32U) - 1;  // the most that a plain zip and FAT hold

std::string asText(std::uint64_t bytes) { return KZFileManager::formatFileSize(static_cast<double>(bytes)); }

std::string counted(std::size_t number, const std::string& noun) {
    return std::to_string(number) + ' ' + noun + (number == 1 ? "" : "s");
}

}  // namespace

void checkSizes(const CheckedBundle& bundle, Findings& findings) {
    std::uint64_t bytes = 0;
    std::size_t files = 0;
    const InventoryEntry* largest = nullptr;
    ItemCursor items(bundle);
    for (const InventoryEntry& entry : bundle.contents.entries) {
        if (entry.type != FileType::regular) {
            continue;
        }
        if (entry.size > huge) {
            add(findings, "file-huge", entry.path, "It has " + asText(entry.size) + ".");
        }
        if (items.at(entry.path) != nullptr) {
            ++files;
            bytes += entry.size;
            largest = largest == nullptr || entry.size > largest->size ? &entry : largest;
        }
    }
    if (largest != nullptr) {
        add(findings, "sizes", InstallationTree::pathInBundle,
            counted(bundle.items.size(), "item") + " with " + counted(files, "file") + " and " + asText(bytes) +
                " in all; the largest file is \"" + largest->path.substr(bundle.treePrefix.size()) + "\" with " +
                asText(largest->size) + ".");
    }
}

}  // namespace wickfield_bundle
