// The rules that a bundle is checked by: each a function of what was found in it, all run by checkBundle.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tools/wickfield-bundle/check/Finding.h"
#include "tools/wickfield-bundle/check/Inventory.h"

namespace wickfield_bundle {

// What an installation puts in place as one, as the installer's own walk finds it.
struct CheckedItem {
    enum class Guard { none, standardFolder, systemFolder };  // the folder itself; something in one of the system's

    std::string place;          // of its source, from the bundle's folder; by way of a link it is in no inventory
    std::string path;           // below the tree, as "/Library/x"; "x" at its very top
    std::string destination;    // for a customer whose home is "/Users/user"
    Guard guard = Guard::none;  // why the destination is not to be touched, as the file operations see it
};

// What a rule may look at.
struct CheckedBundle {
    std::string path;                     // of the bundle
    Inventory contents;                   // of the whole bundle; paths begin with "Contents/"
    std::string treePrefix;               // "Contents/Resources/PluginStructure/"
    std::string resourcesPrefix;          // "Contents/Resources/"
    std::vector<CheckedItem> items;       // in the order of their places
    std::vector<CheckedItem> passedOver;  // what the walk leaves out, in the order of their places
    bool isWalkEndless = false;           // it was given up among folders that links lead to over and over

    std::string fullPath(const std::string& place) const { return place.empty() ? path : path + "/" + place; }
    bool isInTree(std::string_view place) const { return place.starts_with(treePrefix); }

    // The item that is at the place, or that holds it; null when there is none.
    const CheckedItem* itemAt(std::string_view place) const;
    bool hasItemsIn(std::string_view folder) const;
    bool isPassedOver(std::string_view place) const;  // itself, or with the bundle that holds it
};

// itemAt for places that are asked for in the order of an inventory, in no time.
class ItemCursor {
public:
    explicit ItemCursor(const CheckedBundle& bundle) : m_items(bundle.items) {}

    const CheckedItem* at(std::string_view place) {
        while (m_next < m_items.size() && !comesBefore(place, m_items[m_next].place)) {
            ++m_next;
        }
        const CheckedItem* const item = m_next == 0 ? nullptr : &m_items[m_next - 1];
        return item != nullptr && (item->place == place || liesWithin(place, item->place)) ? item : nullptr;
    }

private:
    const std::vector<CheckedItem>& m_items;
    std::size_t m_next = 0;  // the first item that comes after the place
};

// Whether an installer lies at the path: a folder "Name.app" with a folder "Contents". Why not, if it does not.
bool isBundle(const std::string& path, std::string& whyNot);

// Reads all that the rules look at. The path has to be a bundle's.
CheckedBundle lookAt(const std::string& path);

// Each adds its findings to the end. None throws for anything that a bundle can hold. They are called while the
// bundle stands in for the program's own: host().bundle looks its resources up.
void checkScripts(const CheckedBundle& bundle, Findings& findings);
void checkTree(const CheckedBundle& bundle, Findings& findings);  // top, skipped, kinds of file
void checkPlaceholders(const CheckedBundle& bundle, Findings& findings);
void checkPermissions(const CheckedBundle& bundle, Findings& findings);
void checkLinks(const CheckedBundle& bundle, Findings& findings);
void checkNames(const CheckedBundle& bundle, Findings& findings);         // collisions, lengths
void checkPackages(const CheckedBundle& bundle, Findings& findings);      // plug-in bundles
void checkPrograms(const CheckedBundle& bundle, Findings& findings);      // Mach-O
void checkDestinations(const CheckedBundle& bundle, Findings& findings);  // guards
void checkSizes(const CheckedBundle& bundle, Findings& findings);
void checkQuarantine(const CheckedBundle& bundle, Findings& findings);
void checkLayout(const CheckedBundle& bundle, Findings& findings);  // what an installer's own parts have to be

// All of them, by severity, then place, then rule. A path that is no bundle at all gives one error, "not-a-bundle".
Findings checkBundle(const std::string& path);

}  // namespace wickfield_bundle
