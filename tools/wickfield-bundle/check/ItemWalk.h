// The items of a bundle that is checked.
#pragma once

#include "tools/wickfield-bundle/check/Check.h"

namespace wickfield_bundle {

// Walks the tree as the installer does, but that it stays in the bundle and ends. What the bundle's inventory knows is
// not looked up again. Sets `items`, `passedOver` and `isWalkEndless`.
void findItems(CheckedBundle& bundle);

}  // namespace wickfield_bundle
