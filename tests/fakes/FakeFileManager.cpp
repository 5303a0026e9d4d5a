#include "tests/fakes/FakeFileManager.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace fakes {

using platform::Error;
using platform::Failure;
using platform::FileType;

namespace {

constexpr int mostLinks = 40;

std::string parentOf(const std::string& path) {
    const auto slash = path.rfind('/');
    return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

std::string below(const std::string& folder) { return folder == "/" ? folder : folder + "/"; }

Error error(int code, const std::string& path) { return {code, "Cannot use “" + path + "”"}; }

}  // namespace

class FakeFileManager::Handle : public platform::FileManager::AppendHandle {
public:
    Handle(FakeFileManager& files, std::string path) : m_files(files), m_path(std::move(path)) {}

    Failure append(std::string_view bytes) override {
        const std::lock_guard guard(m_files.m_lock);
        if (const auto failing = m_files.failures.find("append"); failing != m_files.failures.end()) {
            return failing->second;
        }
        if (Node* node = m_files.find(m_path)) {
            node->contents += bytes;  // a file that was removed meanwhile swallows it
        }
        return {};
    }

private:
    FakeFileManager& m_files;
    std::string m_path;
};

FakeFileManager::FakeFileManager() { add("/", FileType::folder); }

void FakeFileManager::addFile(const std::string& path, const std::string& contents) {
    addFolder(parentOf(path));
    add(path, FileType::regular).contents = contents;
}

void FakeFileManager::addFolder(const std::string& path) {
    if (find(path) == nullptr) {
        addFolder(parentOf(path));
        add(path, FileType::folder);
    }
}

void FakeFileManager::addLink(const std::string& path, const std::string& target) {
    addFolder(parentOf(path));
    add(path, FileType::symbolicLink).contents = target;
}

FakeFileManager::Node* FakeFileManager::find(const std::string& path) {
    const auto found = m_nodes.find(path);
    return found == m_nodes.end() ? nullptr : &found->second;
}

std::string FakeFileManager::followed(const std::string& path) {
    std::string at = path;
    for (int links = 0; links < mostLinks; ++links) {
        const Node* node = find(at);
        if (node == nullptr || node->type != FileType::symbolicLink) {
            return at;
        }
        at = node->contents.starts_with('/') ? node->contents : below(parentOf(at)) + node->contents;
    }
    return {};
}

FakeFileManager::Node* FakeFileManager::findFollowed(const std::string& path) { return find(followed(path)); }

FakeFileManager::Node& FakeFileManager::add(const std::string& path, FileType type) {
    Node& node = m_nodes[path];
    node = Node{};
    node.type = type;
    node.permissions = type == FileType::folder ? 0755 : 0644;
    node.inode = ++m_lastInode;
    return node;
}

bool FakeFileManager::isLocked(const std::string& path) {
    const Node* node = find(path);
    const Node* parent = findFollowed(parentOf(path));
    return (node != nullptr && node->immutable) || (parent != nullptr && parent->immutable);
}

Failure FakeFileManager::begin(const std::string& operation, const std::string& path, const std::string& other) {
    calls.push_back(operation + " " + path + (other.empty() ? "" : " " + other));
    const auto failing = failures.find(operation);
    return failing == failures.end() ? Failure{} : failing->second;
}

bool FakeFileManager::fileExists(const std::string& path) {
    const std::lock_guard guard(m_lock);
    return findFollowed(path) != nullptr;
}

bool FakeFileManager::isFolder(const std::string& path) {
    const std::lock_guard guard(m_lock);
    const Node* node = findFollowed(path);
    return node != nullptr && node->type == FileType::folder;
}

bool FakeFileManager::isWritable(const std::string& path) {
    const std::lock_guard guard(m_lock);
    const Node* node = findFollowed(path);
    return node != nullptr && (node->permissions & 0200U) != 0;
}

bool FakeFileManager::isExecutable(const std::string& path) {
    const std::lock_guard guard(m_lock);
    const Node* node = findFollowed(path);
    return node != nullptr && (node->permissions & 0100U) != 0;
}

std::optional<platform::FileIdentity> FakeFileManager::identity(const std::string& path) {
    const std::lock_guard guard(m_lock);
    const Node* node = findFollowed(path);
    return node == nullptr ? std::nullopt : std::optional(platform::FileIdentity{1, node->inode});
}

std::optional<platform::FileAttributes> FakeFileManager::attributes(const std::string& path) {
    const std::lock_guard guard(m_lock);
    const Node* node = find(path);
    if (node == nullptr) {
        return std::nullopt;
    }
    return platform::FileAttributes{node->type,      node->contents.size(),  node->permissions,
                                    node->immutable, node->modificationDate, node->creationDate};
}

std::optional<std::string> FakeFileManager::destinationOfSymbolicLink(const std::string& path) {
    const std::lock_guard guard(m_lock);
    const Node* node = find(path);
    return node != nullptr && node->type == FileType::symbolicLink ? std::optional(node->contents) : std::nullopt;
}

std::optional<std::vector<platform::DirectoryEntry>> FakeFileManager::contentsOfDirectory(const std::string& path) {
    const std::lock_guard guard(m_lock);
    const std::string folder = followed(path);
    const Node* node = find(folder);
    if (node == nullptr || node->type != FileType::folder) {
        return std::nullopt;
    }
    std::vector<platform::DirectoryEntry> entries;
    const std::string prefix = below(folder);
    for (auto at = m_nodes.upper_bound(prefix); at != m_nodes.end() && at->first.starts_with(prefix); ++at) {
        const std::string name = at->first.substr(prefix.size());
        if (name.find('/') == std::string::npos) {
            entries.push_back({name, at->second.type});
        }
    }
    return entries;
}

Failure FakeFileManager::removeItem(const std::string& path) {
    const std::lock_guard guard(m_lock);
    if (Failure failed = begin("removeItem", path)) {
        return failed;
    }
    if (find(path) == nullptr) {
        return error(ENOENT, path);
    }
    if (isLocked(path)) {
        return error(EPERM, path);
    }
    const std::string prefix = below(path);
    std::erase_if(m_nodes, [&](const auto& item) { return item.first == path || item.first.starts_with(prefix); });
    return {};
}

Failure FakeFileManager::createDirectory(const std::string& path, platform::Intermediates intermediates) {
    const std::lock_guard guard(m_lock);
    if (Failure failed = begin("createDirectory", path)) {
        return failed;
    }
    const bool all = intermediates == platform::Intermediates::yes;
    if (find(path) != nullptr) {
        return all && isFolder(path) ? Failure{} : error(EEXIST, path);
    }
    std::string above = parentOf(path);
    while (all && find(above) == nullptr) {
        above = parentOf(above);
    }
    if (!isFolder(above)) {
        return error(find(above) == nullptr ? ENOENT : ENOTDIR, path);
    }
    if (isLocked(path)) {
        return error(EPERM, path);
    }
    addFolder(path);
    return {};
}

Failure FakeFileManager::beginTransfer(const std::string& operation, const std::string& source,
                                       const std::string& destination) {
    if (Failure failed = begin(operation, source, destination)) {
        return failed;
    }
    if (find(source) == nullptr || !isFolder(parentOf(destination))) {
        return error(ENOENT, source);
    }
    if (find(destination) != nullptr) {
        return error(EEXIST, destination);
    }
    if (destination.starts_with(below(source))) {
        return error(EINVAL, source);
    }
    return isLocked(destination) ? error(EPERM, destination) : Failure{};
}

Failure FakeFileManager::copyItem(const std::string& source, const std::string& destination) {
    const std::lock_guard guard(m_lock);
    if (Failure failed = beginTransfer("copyItem", source, destination)) {
        return failed;
    }
    std::map<std::string, Node> copies;
    for (const auto& [path, node] : m_nodes) {
        if (path == source || path.starts_with(below(source))) {
            Node& copy = copies[destination + path.substr(source.size())] = node;
            copy.immutable = false;
            copy.inode = ++m_lastInode;
        }
    }
    m_nodes.merge(copies);
    return {};
}

Failure FakeFileManager::moveItem(const std::string& source, const std::string& destination) {
    const std::lock_guard guard(m_lock);
    if (Failure failed = beginTransfer("moveItem", source, destination)) {
        return failed;
    }
    if (isLocked(source)) {
        return error(EPERM, source);
    }
    std::map<std::string, Node> moved;
    for (const auto& [path, node] : m_nodes) {
        if (path == source || path.starts_with(below(source))) {
            moved[destination + path.substr(source.size())] = node;
        }
    }
    std::erase_if(m_nodes,
                  [&](const auto& item) { return item.first == source || item.first.starts_with(below(source)); });
    m_nodes.merge(moved);
    return {};
}

Failure FakeFileManager::setImmutable(const std::string& path, bool immutable) {
    const std::lock_guard guard(m_lock);
    if (Failure failed = begin("setImmutable", path, immutable ? "yes" : "no")) {
        return failed;
    }
    Node* node = find(path);
    if (node == nullptr) {
        return error(ENOENT, path);
    }
    node->immutable = immutable;
    return {};
}

Failure FakeFileManager::setPermissions(const std::string& path, unsigned permissions) {
    const std::lock_guard guard(m_lock);
    if (Failure failed = begin("setPermissions", path)) {
        return failed;
    }
    Node* node = findFollowed(path);
    if (node == nullptr) {
        return error(ENOENT, path);
    }
    node->permissions = permissions & 07777U;
    return {};
}

Failure FakeFileManager::setCreationDate(const std::string& path, platform::Date date) {
    const std::lock_guard guard(m_lock);
    if (Failure failed = begin("setCreationDate", path)) {
        return failed;
    }
    Node* node = find(path);
    if (node == nullptr) {
        return error(ENOENT, path);
    }
    node->creationDate = date;
    return {};
}

Failure FakeFileManager::setModificationDate(const std::string& path, platform::Date date) {
    const std::lock_guard guard(m_lock);
    if (Failure failed = begin("setModificationDate", path)) {
        return failed;
    }
    Node* node = findFollowed(path);
    if (node == nullptr) {
        return error(ENOENT, path);
    }
    node->modificationDate = date;
    return {};
}

std::variant<std::size_t, Error> FakeFileManager::readExtendedAttribute(const std::string& path,
                                                                        const std::string& name, std::span<char> room) {
    const std::lock_guard guard(m_lock);
    const Node* node = findFollowed(path);
    if (node == nullptr) {
        return error(ENOENT, path);
    }
    const auto found = node->extendedAttributes.find(name);
    if (found == node->extendedAttributes.end()) {
        return error(ENODATA, path);
    }
    if (!room.empty() && room.size() < found->second.size()) {
        return error(ERANGE, path);
    }
    std::copy_n(found->second.begin(), std::min(room.size(), found->second.size()), room.begin());
    return found->second.size();
}

Failure FakeFileManager::setExtendedAttribute(const std::string& path, const std::string& name,
                                              std::span<const char> value) {
    const std::lock_guard guard(m_lock);
    if (Failure failed = begin("setExtendedAttribute", path, name)) {
        return failed;
    }
    Node* node = findFollowed(path);
    if (node == nullptr) {
        return error(ENOENT, path);
    }
    if (name.empty() || name.find('\0') != std::string::npos) {
        return error(EINVAL, path);
    }
    node->extendedAttributes[name].assign(value.begin(), value.end());
    return {};
}

std::optional<int> FakeFileManager::labelNumber(const std::string& path) {
    const std::lock_guard guard(m_lock);
    const Node* node = find(path);
    return node == nullptr ? std::nullopt : std::optional(node->label);
}

Failure FakeFileManager::setLabelNumber(const std::string& path, long number) {
    const std::lock_guard guard(m_lock);
    if (Failure failed = begin("setLabelNumber", path)) {
        return failed;
    }
    Node* node = find(path);
    if (node == nullptr || node->type == FileType::symbolicLink) {
        return error(node == nullptr ? ENOENT : EPERM, path);
    }
    if (number < 0 || number > 7) {
        return error(EINVAL, path);
    }
    node->label = static_cast<int>(number);
    return {};
}

Failure FakeFileManager::writeAtomically(const std::string& path, std::string_view contents) {
    const std::lock_guard guard(m_lock);
    if (Failure failed = begin("writeAtomically", path)) {
        return failed;
    }
    const std::string target = findFollowed(path) != nullptr ? followed(path) : path;
    if (isFolder(target) || !isFolder(parentOf(target))) {
        return error(isFolder(target) ? EISDIR : ENOENT, path);
    }
    if (isLocked(target)) {
        return error(EPERM, path);
    }
    const Node* replaced = find(target);
    const unsigned permissions =
        replaced != nullptr && replaced->type == FileType::regular ? replaced->permissions : 0644;
    Node& node = add(target, FileType::regular);
    node.permissions = permissions;
    node.contents = contents;
    return {};
}

std::optional<std::string> FakeFileManager::readFile(const std::string& path, std::uint64_t limit) {
    const std::lock_guard guard(m_lock);
    const Node* node = findFollowed(path);
    const bool readable = node != nullptr && node->type == FileType::regular && node->contents.size() <= limit;
    return readable ? std::optional(node->contents) : std::nullopt;
}

std::unique_ptr<platform::FileManager::AppendHandle> FakeFileManager::openForAppending(const std::string& path) {
    const std::lock_guard guard(m_lock);
    const std::string target = followed(path);
    const Node* node = find(target);
    const bool usable = node != nullptr && node->type == FileType::regular && failures.count("openForAppending") == 0;
    return usable ? std::make_unique<Handle>(*this, target) : nullptr;
}

}  // namespace fakes
