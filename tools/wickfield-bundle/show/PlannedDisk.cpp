#include "tools/wickfield-bundle/show/PlannedDisk.h"

#include <climits>
#include <filesystem>

#include "lib/KZFileManager.h"
#include "lib/KZLocalPaths.h"
#include "lib/base/PathText.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/show/Rights.h"

namespace wickfield_bundle {

namespace {

using Verdict = PlannedDisk::Verdict;

platform::FileManager& files() { return *platform::host().files; }

bool isSuperuser() { return platform::host().identity->realUserID() == 0; }

bool liesBelow(const std::string& path, const std::string& folder) {
    return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

Verdict refused(std::string reason) {
    return {.state = ItemState::refused, .needsAdministrator = false, .reason = std::move(reason), .awaited = {}};
}

// The superuser is never asked: he is an administrator.
Verdict byAdministrator(ItemState state, const std::string& reason) {
    return {.state = state, .needsAdministrator = !isSuperuser(), .reason = reason, .awaited = {}};
}

bool isTooLong(const std::string& path) {
    return path.size() >= PATH_MAX || kz::lastPathComponent(path).size() > NAME_MAX;
}

// Whether the user's rights are enough to move something to his Trash; if not, whether an administrator's would be.
Verdict trashFor(const std::string& path) {
    const auto trash = KZLocalPaths::trashDirectory();
    if (!trash) {
        return refused("it would have to go to the Trash, and nobody is there whose Trash could be meant");
    }
    if (*trash == path || liesBelow(*trash, path)) {
        return refused("it would have to go to the Trash, which lies in it");
    }
    const bool isThere = files().isFolder(*trash);
    const std::string home = kz::deletingLastPathComponent(*trash);
    if (rightToChange(isThere ? *trash : home) == Right::granted) {
        return {.state = ItemState::replaced, .needsAdministrator = false, .reason = {}, .awaited = {}};
    }
    return isThere ? byAdministrator(ItemState::replaced, "only an administrator may change the Trash " + *trash)
                   : refused("it would have to go to the Trash, which cannot be made in " + home);
}

std::string plainly(const std::string& path) {
    return kz::appendPathComponent(std::filesystem::path(path).lexically_normal().string(), "");
}

}  // namespace

// A folder that stands on the disk by now.
PlannedDisk::Folder PlannedDisk::standingFolder(const std::string& path) const {
    if (!files().isExecutable(path)) {
        return {.standing = Folder::Standing::impossible, .reason = "this user may not enter the folder " + path};
    }
    switch (rightToChange(path)) {
        case Right::granted:
            return {};
        case Right::readOnly:
            return {.standing = Folder::Standing::impossible,
                    .reason = "the folder " + path + " lies on a file system that can only be read"};
        case Right::locked:
            // The superuser's copy clears the flag of the folder first.
            return isSuperuser() ? Folder{.isLocked = true, .reason = {}}
                                 : Folder{.standing = Folder::Standing::impossible,
                                          .reason = "the folder " + path + " is locked"};
        case Right::administrators:
            break;
    }
    return {.needsAdministrator = true, .reason = "only an administrator may change the folder " + path};
}

PlannedDisk::Folder PlannedDisk::lookAt(const std::string& path) {
    const auto impossible = [&](const std::string& why) {
        return Folder{.standing = Folder::Standing::impossible, .reason = path + why};
    };
    if (const auto placed = m_placed.find(path); placed != m_placed.end()) {
        return placed->second.kind == ItemKind::package
                   ? Folder{}
                   : impossible(" is put there by this installer and is no folder");
    }
    if (const auto source = sourceWithin(path)) {
        return !files().fileExists(*source) ? Folder{.standing = Folder::Standing::missing, .reason = {}}
               : files().isFolder(*source)  ? Folder{}
                                            : impossible(" is put there by this installer and is no folder");
    }
    if (isTooLong(path)) {
        return impossible(": the path is too long");
    }
    if (files().isFolder(path)) {
        return standingFolder(path);
    }
    if (files().attributes(path)) {
        return impossible(files().fileExists(path) ? " is no folder" : " is a link that leads nowhere");
    }
    const std::string above = kz::deletingLastPathComponent(path);
    if (above == path || above.empty()) {
        return impossible(" cannot be looked at");
    }
    Folder folder = folderAt(above);
    if (folder.standing == Folder::Standing::there) {
        folder.standing = folder.isLocked ? Folder::Standing::impossible : Folder::Standing::missing;
        folder.reason = folder.isLocked ? "the folder " + above + " is locked" : folder.reason;
    }
    return folder;
}

const PlannedDisk::Folder& PlannedDisk::folderAt(const std::string& path) {
    const auto known = m_folders.find(path);
    return known != m_folders.end() ? known->second : m_folders.emplace(path, lookAt(path)).first->second;
}

// Where in the bundle the path comes from, if a package of this installer's stands above it.
std::optional<std::string> PlannedDisk::sourceWithin(const std::string& path) const {
    for (std::size_t end = path.rfind('/'); end != 0 && end != std::string::npos; end = path.rfind('/', end - 1)) {
        const auto placed = m_placed.find(path.substr(0, end));
        if (placed != m_placed.end() && placed->second.kind == ItemKind::package) {
            return placed->second.source + path.substr(end);
        }
    }
    return std::nullopt;
}

bool PlannedDisk::exists(const std::string& path) const {
    const std::string plain = plainly(path);
    if (m_placed.contains(plain) || m_made.contains(plain)) {
        return true;
    }
    const auto source = sourceWithin(plain);
    return source ? files().fileExists(*source) : files().fileExists(path) || files().fileExists(plain);
}

bool PlannedDisk::isReadOnly(const std::string& path) const {
    return !m_placed.contains(plainly(path)) && files().fileExists(path) && !files().isWritable(path);
}

std::string PlannedDisk::targetOf(const std::string& link, const std::string& destination) {
    const std::string target = files().destinationOfSymbolicLink(link).value_or("");
    return target.starts_with('/') ? target : kz::deletingLastPathComponent(destination) + "/" + target;
}

std::vector<std::string> PlannedDisk::madeFolders() const { return {m_made.begin(), m_made.end()}; }

Verdict PlannedDisk::trashing(const std::string& destination, const Folder& parent) const {
    const auto attributes = files().attributes(destination);
    if (attributes && attributes->immutable && !isSuperuser()) {
        return refused("what stands there is locked");
    }
    if (parent.isLocked) {
        return refused("what stands there lies in a locked folder");
    }
    const bool isFolder = attributes && attributes->type == platform::FileType::folder;
    Verdict verdict = trashFor(destination);
    const std::string above = kz::deletingLastPathComponent(destination);
    if (verdict.state == ItemState::replaced && parent.needsAdministrator) {
        verdict = byAdministrator(ItemState::replaced, parent.reason);
    } else if (verdict.state == ItemState::replaced && !mayLeave(destination, above)) {
        verdict = byAdministrator(ItemState::replaced, "only an administrator may move what stands there");
    }
    const bool plainFails = verdict.needsAdministrator || verdict.state == ItemState::refused;
    if (plainFails && KZLocalPaths::isPathSystemDirectory(destination, ExactMatch::yes)) {
        return refused("a folder of the system stands there, which is never replaced");
    }
    if (verdict.reason.empty() && isFolder) {
        verdict.reason = "a folder stands there and goes to the Trash with all that lies in it";
    }
    return verdict;
}

Verdict PlannedDisk::replacing(ItemKind kind, const std::string& destination, const Folder& parent) const {
    const Verdict ofParent{.state = ItemState::replaced,
                           .needsAdministrator = parent.needsAdministrator,
                           .reason = parent.reason,
                           .awaited = {}};
    if (const auto placed = m_placed.find(destination); placed != m_placed.end()) {
        Verdict verdict = ofParent;
        verdict.reason = "this installer puts another item of its own there before";
        return verdict;
    }
    if (m_made.contains(destination) || sourceWithin(destination)) {
        Verdict verdict = ofParent;
        verdict.reason = "items of this installer's own are there by then, and go to the Trash";
        return verdict;
    }
    if (files().fileExists(destination)) {
        return trashing(destination, parent);
    }
    if (kind == ItemKind::package) {
        return refused("a link that leads nowhere stands there");
    }
    return byAdministrator(ItemState::replaced, "a link that leads nowhere stands there, which is overwritten");
}

Verdict PlannedDisk::verdictOn(const std::string& source, ItemKind kind, const std::string& destination) {
    if (isTooLong(destination)) {
        return refused("the path is too long");
    }
    const std::string above = kz::deletingLastPathComponent(destination);
    const Folder& parent = folderAt(above);
    if (parent.standing == Folder::Standing::impossible) {
        return refused(parent.reason);
    }
    if (parent.standing == Folder::Standing::missing && !KZFileManager::isDriveMountedForPath(above)) {
        return refused("its volume is not there");
    }
    const auto within = sourceWithin(destination);
    const bool isTaken = m_placed.contains(destination) || m_made.contains(destination) ||
                         (within ? files().attributes(*within) : files().attributes(destination)).has_value();
    Verdict verdict{.state = ItemState::added,
                    .needsAdministrator = parent.needsAdministrator,
                    .reason = parent.reason,
                    .awaited = {}};
    if (isTaken) {
        verdict = replacing(kind, destination, parent);
    }
    if (verdict.state != ItemState::refused && kind == ItemKind::special) {
        verdict =
            byAdministrator(verdict.state, "it is a pipe, socket or device, which only an administrator's copy takes");
    }
    if (verdict.state != ItemState::refused && kind == ItemKind::link) {
        if (verdict.needsAdministrator && !files().fileExists(source)) {
            return refused("it is a link that leads nowhere in the tree, which no administrator's copy takes");
        }
        const std::string target = targetOf(source, destination);
        const bool isOnTheWay = plainly(target) == above || liesBelow(above, plainly(target));
        if (!isOnTheWay && !exists(target)) {
            Verdict early = refused("it is a link to " + plainly(target) +
                                    ", where nothing is when its turn comes; the installation waits 10 seconds and "
                                    "fails");
            early.awaited = target;
            return early;
        }
    }
    return verdict;
}

void PlannedDisk::forgetBelow(const std::string& path) {
    const auto isBelow = [&](const auto& entry) { return liesBelow(entry.first, path); };
    std::erase_if(m_folders, isBelow);
    std::erase_if(m_placed, isBelow);
    std::erase_if(m_made, [&](const std::string& made) { return liesBelow(made, path); });
    m_folders.erase(path);
    m_made.erase(path);
}

void PlannedDisk::add(const std::string& source, ItemKind kind, const std::string& destination) {
    if (m_folders.contains(destination) || m_made.contains(destination) || m_placed.contains(destination)) {
        forgetBelow(destination);
    }
    m_placed[destination] = {source, kind};
    for (std::string path = kz::deletingLastPathComponent(destination);; path = kz::deletingLastPathComponent(path)) {
        Folder& folder = m_folders[path];
        if (folder.standing != Folder::Standing::missing) {
            return;
        }
        folder.standing = Folder::Standing::there;
        m_made.insert(path);
    }
}

Verdict PlannedDisk::put(const std::string& source, ItemKind kind, const std::string& destination) {
    Verdict verdict = verdictOn(source, kind, destination);
    if (verdict.state != ItemState::refused) {
        add(source, kind, destination);
    }
    return verdict;
}

}  // namespace wickfield_bundle
