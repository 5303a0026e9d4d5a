// Where the items of a project go in the mirror tree.
#pragma once

#include <string>
#include <vector>

#include "tools/wickfield-bundle/project/Project.h"

namespace wickfield_bundle {

struct PlacedItem {
    std::string source;
    std::string place;  // in the tree, without a leading "/"
};

// By place, so that what lies in another item comes after it. A destination that ends in "/" is a folder to put the
// item into. Looks at the sources and at the tree; throws SenselessProject for a destination that an installation
// cannot mean, or that two items want, or that the tree or another item has already; CreateFailure for a source that is
// not there.
std::vector<PlacedItem> placeItems(const Project& project);

}  // namespace wickfield_bundle
