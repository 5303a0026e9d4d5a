// Whom items belong to.
#pragma once

#include <sys/types.h>

#include <string>

namespace platform::linux_host {

struct Owner {
    uid_t user = 0;
    gid_t group = 0;
};

// Gives an item, a folder with all that lies in it, to somebody, as far as that is possible; links are not followed. A
// file that has other names elsewhere keeps its owner, since those names may not be meant.
void giveTree(const std::string& path, const Owner& owner);

}  // namespace platform::linux_host
