#include "tools/wickfield-bundle/check/Inventory.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <future>
#include <iterator>
#include <thread>
#include <utility>

#include "tools/wickfield-bundle/check/InventoryWalk.h"

namespace wickfield_bundle {

namespace {

// Paths of one tree have much in common: it is gone through by eight bytes at a time.
std::size_t lengthOfCommonStart(const char* left, const char* right, std::size_t length) {
    std::size_t at = 0;
    for (; at + sizeof(std::uint64_t) <= length; at += sizeof(std::uint64_t)) {
        if (std::memcmp(left + at, right + at, sizeof(std::uint64_t)) != 0) {
            break;
        }
    }
    while (at < length && left[at] == right[at]) {
        ++at;
    }
    return at;
}

template <class Things>
void append(Things& things, Things&& more) {
    std::ranges::move(more, std::back_inserter(things));
}

// The parts lie in one another as deep as the folders do, and deeper: too deep to be gone through by recursion.
void assemble(InventoryPart& first, Inventory& whole) {
    struct Level {
        InventoryPart* part;
        std::size_t nextOther = 0;
        std::size_t nextEntry = 0;
    };
    std::vector<Level> levels{{.part = &first}};
    while (!levels.empty()) {
        auto& [part, nextOther, nextEntry] = levels.back();
        auto& [entries, unreadable, tooDeep] = part->found;
        const bool isLast = nextOther == part->others.size();
        const std::size_t end = isLast ? entries.size() : part->others[nextOther].first;
        const auto at = entries.begin();
        std::move(at + static_cast<std::ptrdiff_t>(nextEntry), at + static_cast<std::ptrdiff_t>(end),
                  std::back_inserter(whole.entries));
        nextEntry = end;
        if (!isLast) {
            levels.push_back({.part = part->others[nextOther++].second});
            continue;
        }
        append(whole.unreadable, std::move(unreadable));
        append(whole.tooDeep, std::move(tooDeep));
        levels.pop_back();
    }
}

}  // namespace

bool comesBefore(std::string_view path, std::string_view other) {
    const std::size_t shorter = std::min(path.size(), other.size());
    const std::size_t at = lengthOfCommonStart(path.data(), other.data(), shorter);
    if (at == shorter) {
        return path.size() < other.size();
    }
    // The end of a name comes before whatever may go on in it.
    const auto rank = [](char c) { return c == '/' ? 0 : static_cast<unsigned char>(c) + 1; };
    return rank(path[at]) < rank(other[at]);
}

const InventoryEntry* Inventory::find(std::string_view path) const {
    const auto found = std::ranges::lower_bound(entries, path, comesBefore, &InventoryEntry::path);
    return found != entries.end() && found->path == path ? &*found : nullptr;
}

Inventory takeInventory(const std::string& root) {
    constexpr unsigned mostThreads = 4;
    constexpr auto aThreadIfThereIsOne = std::launch::async | std::launch::deferred;
    FolderShares shares;
    InventoryPart& part = shares.addPart();
    giveWhole(root, shares, part);
    {
        std::vector<std::future<void>> walks;
        for (unsigned left = std::clamp(std::thread::hardware_concurrency(), 1U, mostThreads); left > 0; --left) {
            walks.push_back(std::async(aThreadIfThereIsOne, walkFolders, std::cref(root), std::ref(shares)));
        }
        for (auto& walk : walks) {
            walk.get();
        }
    }
    Inventory inventory;
    inventory.entries.reserve(shares.countEntries());
    assemble(part, inventory);
    std::ranges::sort(inventory.unreadable, comesBefore, &Inventory::Unreadable::path);
    std::ranges::sort(inventory.tooDeep, comesBefore);
    return inventory;
}

}  // namespace wickfield_bundle
