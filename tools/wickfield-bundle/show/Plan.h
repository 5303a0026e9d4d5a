// What an installation would do, item by item. Plain data.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace wickfield_bundle {

// Added: nothing stands there. Replaced: what stands there goes first, to the Trash unless the reason says otherwise.
// Refused: the installation fails at this item. Unknown: only the customer's own start of the installer decides.
enum class ItemState { added, replaced, refused, unknown };

enum class ItemKind { file, package, link, special };  // special: a pipe, socket or device

struct PlannedItem {
    std::string source;                      // from the bundle's own folder
    std::string path;                        // below the tree
    std::optional<std::string> destination;  // none: nobody is there whose folder could be meant
    ItemKind kind = ItemKind::file;
    ItemState state = ItemState::added;
    bool needsAdministrator = false;  // one is asked for
    std::string reason;               // of the state or of the question; "" where there is nothing to say
    std::uint64_t files = 0;          // and links
    std::uint64_t bytes = 0;
};

struct PlannedScript {
    std::string source;  // from the bundle's own folder
    std::string interpreter;
    bool canRun = false;  // the interpreter is on this host
};

struct Plan {
    std::string bundle;  // absolute
    std::string name;    // these three as the window shows them
    std::string version;
    std::string author;
    std::optional<std::string> home;  // none: nobody is there to install for
    std::optional<PlannedScript> before;
    std::optional<PlannedScript> after;
    std::vector<PlannedItem> items;       // by their destinations; a folder's items stay together
    std::vector<std::string> folders;     // that are made because they are missing, likewise
    std::vector<std::string> passedOver;  // from the bundle's own folder, likewise
};

struct PlanTotals {
    std::size_t added = 0;
    std::size_t replaced = 0;
    std::size_t refused = 0;
    std::size_t unknown = 0;
    std::size_t needAdministrator = 0;
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
};
PlanTotals totalsOf(const Plan& plan);

}  // namespace wickfield_bundle
