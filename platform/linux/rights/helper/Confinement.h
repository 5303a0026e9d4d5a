// What the tool of a file command may change, so that nobody can lead it astray between the check and the use.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/linux/rights/helper/MountShield.h"
#include "platform/posix/Descriptor.h"

namespace platform::rights {

// Below each of the folders, and nowhere else, the tool may do what is allowed there. They are held open, so that they
// stay these folders whatever takes their names.
struct Confinement {
    struct Place {
        posix::Descriptor item;
        std::uint64_t allowed = 0;  // Landlock's access rights
    };
    void add(posix::Descriptor item, std::uint64_t allowed);

    std::uint64_t watched = 0;  // the rights that are denied elsewhere; 0: the kernel has no Landlock
    std::vector<Place> places;
    std::optional<MountShield> shield = {};  // where items can be swapped, against changes that Landlock lets pass
    bool onlyRenames = false;                // there too, in place of the shield, which no item can be renamed through
};

// The version of Landlock that this kernel has switched on, 0: none. Asked for once.
int landlockVersion();

// For the file commands (rm, mv, cp, mkdir, touch of /bin and /usr/bin), whose last arguments are the items they work
// on, the confinement to the folders of the items they are to change. Where a folder on the way to an item is missing
// or is none, and for a path that is too long or goes round in circles, the tool may run but change nothing, and is
// left to fail by itself. An errno refuses the command:
// - EINVAL for a path that is not absolute or has a component "." or "..", and, without Landlock, ENOENT, ENOTDIR,
//   ENAMETOOLONG or ELOOP for such a path;
// - EPERM for a path that somebody without administrator rights has bent to a place that is not his, for a tool that is
//   not root's own, for a move one side of which holds the other where that one belongs to somebody else, and, without
//   Landlock, for every path on which others than root could do something.
// What is copied or moved is read from its folder only. A copy to where a folder of its name stands already changes
// that folder only. A move within one file system is a renaming or fails. Hard links are the kernel's matter
// (fs.protected_hardlinks).
//
// None for any other tool: it is run as the caller names it, with all of root's rights.
std::variant<std::optional<Confinement>, int> confinementFor(const std::vector<std::string>& command,
                                                             int landlock = landlockVersion());

// Confine the calling process, for good, in this order; for use between vfork and exec, so nothing is allocated and
// nothing of the caller is changed. 0 or an errno. What the process has opened before it enters the view stays open to
// changes.
int enterView(const Confinement& confinement) noexcept;
int enterConfinement(const Confinement& confinement) noexcept;

}  // namespace platform::rights
