// The disk as it will be while an installation is under way: what stands there now, and what the items so far have put
// in place. Nothing is changed.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "tools/wickfield-bundle/show/Plan.h"

namespace wickfield_bundle {

class PlannedDisk {
public:
    struct Verdict {
        ItemState state = ItemState::added;
        bool needsAdministrator = false;
        std::string reason;
        std::string awaited;  // what a link leads to that is refused because nothing is there when its turn comes
    };

    // What comes of putting the item there, as the installer does it. `destination` is absolute. Items are put in the
    // order of the installation.
    Verdict put(const std::string& source, ItemKind kind, const std::string& destination);

    // Where the link would lead from its destination; whether something is there by now.
    static std::string targetOf(const std::string& link, const std::string& destination);
    bool exists(const std::string& path) const;
    bool isReadOnly(const std::string& path) const;  // for this user, of what stands on the disk already

    std::vector<std::string> madeFolders() const;  // by their names

private:
    struct Folder {
        enum class Standing { there, missing, impossible };
        Standing standing = Standing::there;
        bool needsAdministrator = false;
        bool isLocked = false;
        std::string reason;  // of the question for an administrator, or why nothing can be put there
    };
    struct Placed {
        std::string source;
        ItemKind kind = ItemKind::file;
    };

    const Folder& folderAt(const std::string& path);
    Folder lookAt(const std::string& path);
    Folder standingFolder(const std::string& path) const;
    std::optional<std::string> sourceWithin(const std::string& path) const;
    Verdict verdictOn(const std::string& source, ItemKind kind, const std::string& destination);
    Verdict replacing(ItemKind kind, const std::string& destination, const Folder& parent) const;
    Verdict trashing(const std::string& destination, const Folder& parent) const;
    void add(const std::string& source, ItemKind kind, const std::string& destination);
    void forgetBelow(const std::string& path);

    std::unordered_map<std::string, Folder> m_folders;  // those that have been looked at
    std::map<std::string, Placed> m_placed;             // by destinations
    std::set<std::string> m_made;                       // folders
};

}  // namespace wickfield_bundle
