// Whom items belong to, and on whose behalf the superuser handles them.
#pragma once

#include <sys/types.h>

#include <string>

namespace platform::linux_host {

struct Owner {
    uid_t user = 0;
    gid_t group = 0;
};

// Gives the superuser's folders in a tree, its top included, to somebody, so that he can empty and move it. `folder` is
// an open one that holds the tree. Nothing but folders changes hands: a file can be another name of one that is not
// meant, a device would hand over more than a file, and neither stands in the way of removing the tree. Folders of
// other people stay theirs, and links are not followed.
void giveFolders(int folder, const std::string& name, const Owner& owner);

}  // namespace platform::linux_host
