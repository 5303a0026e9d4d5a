// The items of a bundle by where they are put.
#pragma once

#include <string_view>
#include <vector>

#include "tools/wickfield-bundle/check/Check.h"

namespace wickfield_bundle {

class DestinationIndex {
public:
    explicit DestinationIndex(const CheckedBundle& bundle);  // keeps a reference to its items

    // The item that is put at the path, or that holds it; null when there is none.
    const CheckedItem* holding(std::string_view path) const;

    // Whether an item is put somewhere in the folder.
    bool hasItemsIn(std::string_view folder) const;

private:
    std::vector<const CheckedItem*> m_items;  // in the order of their destinations
};

}  // namespace wickfield_bundle
