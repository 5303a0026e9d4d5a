#include "tools/wickfield-bundle/check/DestinationIndex.h"

#include <algorithm>
#include <iterator>

namespace wickfield_bundle {

namespace {

std::string_view destinationOf(const CheckedItem* item) { return item->destination; }

}  // namespace

DestinationIndex::DestinationIndex(const CheckedBundle& bundle) {
    m_items.reserve(bundle.items.size());
    for (const CheckedItem& item : bundle.items) {
        m_items.push_back(&item);
    }
    std::ranges::sort(m_items, comesBefore, destinationOf);
}

const CheckedItem* DestinationIndex::holding(std::string_view path) const {
    const auto after = std::ranges::upper_bound(m_items, path, comesBefore, destinationOf);
    if (after == m_items.begin()) {
        return nullptr;
    }
    const CheckedItem* const item = *std::prev(after);
    return item->destination == path || liesWithin(path, item->destination) ? item : nullptr;
}

bool DestinationIndex::hasItemsIn(std::string_view folder) const {
    const auto first = std::ranges::upper_bound(m_items, folder, comesBefore, destinationOf);
    return first != m_items.end() && liesWithin((*first)->destination, folder);
}

}  // namespace wickfield_bundle
