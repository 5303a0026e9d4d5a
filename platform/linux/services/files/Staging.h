// Making an item under a name of its own, beside the place that it is meant for, and giving it its final name in one
// step.
#pragma once

#include "platform/linux/services/files/ItemPlace.h"

namespace platform::linux_host {

// The place with its last component replaced by a staged name.
ItemPlace stagedSibling(const ItemPlace& place);

// Renames within one file system and never replaces what stands at `to`, a dangling link included. 0 or an errno.
int renameWithoutReplacing(const ItemPlace& from, const ItemPlace& to);

// The same for a file system that cannot do so in one step: a file is linked, then unlinked, and the link goes again
// when the unlinking is refused; for a folder, and where there are no links, what stands at `to` is looked for first.
int renameInTwoSteps(const ItemPlace& from, const ItemPlace& to);

}  // namespace platform::linux_host
