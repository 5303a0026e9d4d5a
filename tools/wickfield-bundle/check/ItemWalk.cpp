#include "tools/wickfield-bundle/check/ItemWalk.h"

#include <algorithm>
#include <climits>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "app/InstallationTree.h"
#include "app/UserPlaceholders.h"
#include "lib/KZLocalPaths.h"
#include "lib/base/PathText.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/check/ModelCustomer.h"

namespace wickfield_bundle {

namespace {

constexpr std::size_t mostBeyondLinks = 20000;  // folders and items

// The bundle's folders, from its inventory where they are in it.
class CheckedFolders : public InstallationTree::Folders {
public:
    CheckedFolders(const CheckedBundle& bundle, std::string tree) : m_bundle(bundle), m_tree(std::move(tree)) {
        std::error_code error;
        m_realBundle = std::filesystem::canonical(bundle.path, error).string();
    }

    std::optional<std::vector<platform::DirectoryEntry>> contents(const std::string& folder) override {
        if (folder != m_tree && !mayEnter(folder)) {
            return std::nullopt;
        }
        const InventoryEntry* const known = find(folder);
        return known != nullptr ? contentsOf(*known) : Folders::contents(folder);
    }

    bool isFolder(const std::string& path) override {
        const InventoryEntry* const known = find(path);
        return known != nullptr ? known->type == platform::FileType::folder : Folders::isFolder(path);
    }

    bool isPackage(const std::string& folder) override {
        const InventoryEntry* const known = find(folder);
        return known != nullptr ? known->isPackage : Folders::isPackage(folder);
    }

    std::optional<platform::FileIdentity> identity(const std::string& path) override {
        const InventoryEntry* const known = find(path);
        return known != nullptr ? known->identity : Folders::identity(path);
    }

    bool isInBundle(const std::string& folder) const {
        std::error_code error;
        return liesWithin(std::filesystem::canonical(folder, error).string(), m_realBundle);
    }

    // Only what is reached by a link can be reached again and again.
    bool spend(const std::string& source) {
        if (!m_link.empty() && liesWithin(source, m_link) && m_left > 0) {
            --m_left;
        }
        return m_left > 0;
    }

    bool areEndless() const { return m_left == 0; }

private:
    // Null where the host is to be asked: for what lies beyond a link, for a link, and for what has so long a path that
    // the host finds nothing there.
    const InventoryEntry* find(const std::string& path) const {
        const InventoryEntry* const known =
            path.size() < PATH_MAX ? m_bundle.contents.find(std::string_view(path).substr(m_bundle.path.size() + 1))
                                   : nullptr;
        return known != nullptr && known->type != platform::FileType::symbolicLink ? known : nullptr;
    }

    std::vector<platform::DirectoryEntry> contentsOf(const InventoryEntry& folder) const {
        const auto& all = m_bundle.contents.entries;
        std::vector<platform::DirectoryEntry> contents;
        auto entry = all.begin() + (&folder - all.data()) + 1;
        while (entry != all.end() && liesWithin(entry->path, folder.path)) {
            contents.push_back({std::string(entry->name()), entry->type});
            const std::string_view sibling = entry->path;
            ++entry;
            if (entry != all.end() && liesWithin(entry->path, sibling)) {
                entry = std::partition_point(
                    entry, all.end(), [&](const InventoryEntry& other) { return liesWithin(other.path, sibling); });
            }
        }
        return contents;
    }

    bool mayEnter(const std::string& folder) {
        std::error_code error;
        const bool isLink = find(folder) == nullptr && std::filesystem::is_symlink(folder, error);
        const bool liesBeyondLink = !m_link.empty() && liesWithin(folder, m_link);
        if (isLink && !liesBeyondLink) {
            m_link = folder;
        }
        return (!isLink || isInBundle(folder)) && (!liesBeyondLink || spend(folder));
    }

    const CheckedBundle& m_bundle;
    std::string m_tree;
    std::string m_realBundle;
    std::string m_link;  // the latest to a folder, but for those that lie beyond one
    std::size_t m_left = mostBeyondLinks;
};

CheckedItem::Guard guardOf(const std::string& destination, const KZLocalPaths::SystemDirectoryGuard& guard) {
    if (!destination.starts_with('/') || !guard.protects(destination, ExactMatch::no)) {
        return CheckedItem::Guard::none;
    }
    return guard.protects(destination, ExactMatch::yes) ? CheckedItem::Guard::standardFolder
                                                        : CheckedItem::Guard::systemFolder;
}

void sort(std::vector<CheckedItem>& items) {
    if (!std::ranges::is_sorted(items, comesBefore, &CheckedItem::place)) {
        std::ranges::sort(items, comesBefore, &CheckedItem::place);
    }
}

}  // namespace

void findItems(CheckedBundle& bundle) {
    const platform::ScopedHost scope(hostOfModelCustomer());
    const std::string tree = kz::appendPathComponent(bundle.path, InstallationTree::pathInBundle);
    CheckedFolders folders(bundle, tree);
    if (!folders.isInBundle(tree)) {
        return;
    }
    bundle.items.reserve(bundle.contents.entries.size());
    const KZLocalPaths::SystemDirectoryGuard systemDirectories;
    const auto checked = [&](const InstallationTree::Item& item) {
        std::string destination = UserPlaceholders::replaced(item.path).value_or(item.path);
        const CheckedItem::Guard guard = guardOf(destination, systemDirectories);
        return CheckedItem{.place = item.source.substr(bundle.path.size() + 1),
                           .path = item.path,
                           .destination = std::move(destination),
                           .guard = guard};
    };
    InstallationTree::visitItems(
        folders, tree, tree,
        [&](const InstallationTree::Item& item) {
            bundle.items.push_back(checked(item));
            return folders.spend(item.source);
        },
        [&](const InstallationTree::Item& item) {
            if (folders.spend(item.source)) {
                bundle.passedOver.push_back(checked(item));
            }
        });
    bundle.isWalkEndless = folders.areEndless();
    sort(bundle.items);
    sort(bundle.passedOver);
}

}  // namespace wickfield_bundle
