// The mirror tree, walked as an installation walks it.
#pragma once

#include <functional>
#include <string>

namespace InstallationTree {

// Where it lies in an installer's bundle.
inline constexpr const char* pathInBundle = "Contents/Resources/PluginStructure";

// A file, a package or a link, which is put in place as one.
struct Item {
    std::string source;
    std::string path;  // below the tree, where a file at its very top has no leading "/"
};

// Any thread; blocks. Calls back for each item below `folder` of the tree whose root is `base`, in the order in which
// the host lists them, until one returns false: then it is false as well. Folders are descended into, by links too, but
// for packages and for a link back to a folder on the way. Items whose names begin with "." are passed over,
// `passedOver` (none: nobody is told) hears of them. Keeps one listing per level in memory. A folder that cannot be
// read has no items.
//
// Links between folders can make a walk longer than anyone waits for. `mayEnter` (none: yes) is asked before each
// folder below the first is read; one that it refuses has no items.
bool visitItems(const std::string& folder, const std::string& base, const std::function<bool(const Item&)>& visit,
                const std::function<void(const Item&)>& passedOver = {},
                const std::function<bool(const std::string& folder)>& mayEnter = {});

}  // namespace InstallationTree
