// The way from "/" to an item, looked at step by step, so that nobody without administrator rights can bend it to a
// place that is not his.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/posix/Descriptor.h"

namespace platform::rights {

// Symbolic links are followed by hand. Whoever owns a folder on the way, or put an item into a folder where others may
// write, rules all that comes after it. While nobody but root does, a link leads anywhere. Behind one other user it may
// only lead to a folder of that user, and behind several to nothing: EPERM.
struct PathWalk {
    enum class Ends {
        atParent,   // the folder that the item lies in; what the item is, and whether it exists, plays no part
        atFolder,   // the item when it is a folder, else the folder that it lies in or would; a link there is followed
        atDeepest,  // as atFolder, but the folders before it need not exist: the last that does
    };

    posix::Descriptor folder;         // where the walk ended, held open for nothing but its identity
    std::optional<struct stat> item;  // what stands at the end; none when it is missing, or was not looked at
    std::optional<uid_t> ruler = 0;   // who else than root can change where the path leads, 0: nobody; none: several
    bool isRootsOwn = true;  // every folder looked into, links' ones included, is root's, and writable by root only
    posix::Descriptor foreign = {};               // the first of them that is not; none: they all are
    std::vector<std::string> beyondForeign = {};  // the names that lead on from there, links not followed

    bool endsInFolder() const { return item && S_ISDIR(item->st_mode); }
};

// EINVAL for a path that is not absolute or has a component "." or "..", or for "/" as an item in its parent; ELOOP
// after 40 links; ENOENT, ENOTDIR and what else the system says of a folder that it does not find.
std::variant<PathWalk, int> walk(const std::string& path, PathWalk::Ends ends);

// Whether `folder` lies somewhere below `above`, or is it.
bool isBelow(const posix::Descriptor& folder, const posix::Descriptor& above);

}  // namespace platform::rights
