// The mirror tree, walked as an installation walks it.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/ports/FileManager.h"

namespace InstallationTree {

// Where it lies in an installer's bundle.
inline constexpr const char* pathInBundle = "Contents/Resources/PluginStructure";

// A file, a package or a link, which is put in place as one.
struct Item {
    std::string source;
    std::string path;  // below the tree, where a file at its very top has no leading "/"
};

// What a walk asks about folders. The host answers; who knows better, or wants to keep a walk out, answers instead.
class Folders {
public:
    virtual ~Folders() = default;

    // None: the folder has no items.
    virtual std::optional<std::vector<platform::DirectoryEntry>> contents(const std::string& folder);
    // All follow a final link.
    virtual bool isFolder(const std::string& path);
    virtual bool isPackage(const std::string& folder);  // which is installed as one
    virtual std::optional<platform::FileIdentity> identity(const std::string& path);
};

// Any thread; blocks. Calls back for each item below `folder` of the tree whose root is `base`, in the order in which
// the host lists them, until one returns false: then it is false as well. Folders are descended into, by links too, but
// for packages and for a link back to a folder on the way. Items whose names begin with "." are passed over,
// `passedOver` (none: nobody is told) hears of them. Keeps one listing per level in memory. A folder that cannot be
// read has no items. Links between folders can make a walk longer than anyone waits for.
bool visitItems(const std::string& folder, const std::string& base, const std::function<bool(const Item&)>& visit,
                const std::function<void(const Item&)>& passedOver = {});

// The same by the answers of `folders`.
bool visitItems(Folders& folders, const std::string& folder, const std::string& base,
                const std::function<bool(const Item&)>& visit, const std::function<void(const Item&)>& passedOver = {});

}  // namespace InstallationTree
