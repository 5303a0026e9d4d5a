// Putting items into the Trash of the freedesktop.org specification.
#pragma once

#include <string>

#include "platform/ports/Error.h"

namespace platform::linux_host {

struct UserTrash {
    std::string folder;    // ".Trash" in the user's home folder
    std::string dataHome;  // where the user's Trash/files and Trash/info lie
};

// Where an item goes, in this order:
// 1. the user's own Trash, when a rename brings the item there;
// 2. the Trash of the file system that the item is on ($top/.Trash/$uid, $top/.Trash-$uid), but for the root's:
// desktops
//    do not show what lies there;
// 3. the user's own Trash, by copying and removing.
// The user's own Trash is `folder` when that is a folder, or a link to one elsewhere; otherwise Trash/files in
// `dataHome`, and `folder` is made a link to it when nothing is there.
//
// For the superuser the Trash is that of the user whose home folder holds `folder`. It is looked up, made and noted
// with that user's rights and must belong to him, so that nothing he arranges in his home folder sends an item or a
// note elsewhere. A user without a Trash of his own that can be used gets one on the item's file system, the root's
// included. The item's own folders are given to him.
//
// Never replaces anything. On a failure the item is where it was, unless the failure says otherwise.
Failure recycleItem(const std::string& folder, const std::string& name, const UserTrash& trash);

}  // namespace platform::linux_host
