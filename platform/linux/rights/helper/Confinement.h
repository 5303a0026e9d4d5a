// What the tool of a file command may change, so that nobody can lead it astray between the check and the use.
#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/posix/Descriptor.h"

namespace platform::rights {

// The folders below which the tool may change something; they are held open, so that it stays these folders whatever
// takes their names.
struct Confinement {
    std::vector<posix::Descriptor> folders;
};

// For the file commands (rm, mv, cp, mkdir, touch of /bin and /usr/bin) the confinement to the folders of the items
// they are to change; none for any other tool, which is run as it is. An errno refuses the command: EINVAL for a path
// that is not absolute or has a ".." in it, EPERM for one that somebody without administrator rights has bent to a
// place that is not his.
std::variant<std::optional<Confinement>, int> confinementFor(const std::vector<std::string>& command);

// Confines the calling process, for good; for use between fork and exec, so nothing is allocated. 0 or an errno.
int enterConfinement(const Confinement& confinement) noexcept;

}  // namespace platform::rights
