#include "app/InstallationTree.h"

#include "lib/base/PathText.h"
#include "platform/ports/Host.h"

namespace InstallationTree {

namespace {

// One folder on the way from the tree's root to the present one.
struct Level {
    std::string folder;
    std::optional<platform::FileIdentity> identity;
    const Level* parent;

    // Whether the folder that `other` leads to is this one or one above it.
    bool liesWithin(const platform::FileIdentity& other) const {
        for (const auto* level = this; level != nullptr; level = level->parent) {
            if (level->identity == other) {
                return true;
            }
        }
        return false;
    }
};

class Walk {
public:
    Walk(Folders& folders, const std::string& base, const std::function<bool(const Item&)>& visit,
         const std::function<void(const Item&)>& passedOver)
        : m_folders(folders), m_base(base), m_visit(visit), m_passedOver(passedOver) {}

    bool visitLevel(const Level& level) const {
        const auto entries = m_folders.contents(level.folder);
        if (!entries) {
            return true;
        }
        for (const auto& entry : *entries) {
            if (!visitEntry(level, entry)) {
                return false;
            }
        }
        return true;
    }

private:
    bool visitEntry(const Level& level, const platform::DirectoryEntry& entry) const {
        const auto source = kz::appendPathComponent(level.folder, entry.name);
        const bool mayBeFolder = entry.type != platform::FileType::regular;
        if (mayBeFolder && m_folders.isFolder(source) && !m_folders.isPackage(source)) {
            const auto identity = m_folders.identity(source);
            // A link back to a folder on the way here is installed as the link that it is, or the walk would never end.
            if (!identity || !level.liesWithin(*identity)) {
                return visitLevel({source, identity, &level});
            }
        }
        const bool hidden = entry.name.starts_with(".");
        if (hidden && !m_passedOver) {
            return true;
        }
        const Item item{source, kz::appendPathComponent(level.folder.substr(m_base.size()), entry.name)};
        if (hidden) {
            m_passedOver(item);
            return true;
        }
        return m_visit(item);
    }

    Folders& m_folders;
    const std::string& m_base;
    const std::function<bool(const Item&)>& m_visit;
    const std::function<void(const Item&)>& m_passedOver;
};

}  // namespace

std::optional<std::vector<platform::DirectoryEntry>> Folders::contents(const std::string& folder) {
    return platform::host().files->contentsOfDirectory(folder);
}

bool Folders::isFolder(const std::string& path) { return platform::host().files->isFolder(path); }

bool Folders::isPackage(const std::string& folder) { return platform::host().workspace->isFilePackage(folder); }

std::optional<platform::FileIdentity> Folders::identity(const std::string& path) {
    return platform::host().files->identity(path);
}

bool visitItems(const std::string& folder, const std::string& base, const std::function<bool(const Item&)>& visit,
                const std::function<void(const Item&)>& passedOver) {
    Folders folders;
    return visitItems(folders, folder, base, visit, passedOver);
}

bool visitItems(Folders& folders, const std::string& folder, const std::string& base,
                const std::function<bool(const Item&)>& visit, const std::function<void(const Item&)>& passedOver) {
    return Walk(folders, base, visit, passedOver).visitLevel({folder, folders.identity(folder), nullptr});
}

}  // namespace InstallationTree
