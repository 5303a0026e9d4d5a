#include "tools/wickfield-bundle/check/Inventory.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <system_error>
#include <utility>
#include <variant>

#include "platform/linux/services/files/FolderListing.h"
#include "platform/ports/Host.h"
#include "platform/posix/Descriptor.h"
#include "tools/wickfield-bundle/check/EntryAttributes.h"

namespace wickfield_bundle {

namespace {

using platform::FileIdentity;
using platform::FileType;
using platform::posix::Descriptor;

constexpr int howFoldersAreOpened = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

FileType typeOf(mode_t mode) {
    return S_ISREG(mode)   ? FileType::regular
           : S_ISDIR(mode) ? FileType::folder
           : S_ISLNK(mode) ? FileType::symbolicLink
                           : FileType::other;
}

FileIdentity identityOf(const struct stat& status) {
    return {.device = static_cast<std::uint64_t>(status.st_dev), .inode = static_cast<std::uint64_t>(status.st_ino)};
}

std::string reasonFor(int code) { return std::generic_category().message(code); }

// 0 or an errno; sorted by bytes.
int namesIn(int folder, std::vector<std::string>& names) {
    const int code = platform::linux_host::visitFolder(
        folder, platform::VisitSizes::no, [&](const platform::VisitedEntry& entry) { names.emplace_back(entry.name); });
    std::ranges::sort(names);
    return code;
}

// The target is at most a path long, whatever the link's size says.
int readTarget(int folder, const std::string& name, std::string& target) {
    target.resize(std::size_t{1} << 12U);
    const ssize_t length = ::readlinkat(folder, name.c_str(), target.data(), target.size());
    const int code = length < 0 ? errno : 0;
    target.resize(length < 0 ? 0 : static_cast<std::size_t>(length));
    target.shrink_to_fit();
    return code;
}

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

class Walk {
public:
    Walk(const std::string& root, platform::FileManager& files)
        : m_attributes(files), m_fullPath(root), m_rootLength(root.size()) {}

    Inventory run() {
        Descriptor root(::open(m_fullPath.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        if (!root) {
            fail(errno);
            return std::move(m_result);
        }
        enter(std::move(root));
        while (!m_levels.empty()) {
            Level& level = m_levels.back();
            if (level.next == level.names.size()) {
                leave();
                continue;
            }
            const std::string& name = level.names[level.next++];
            m_fullPath.resize(level.pathLength);
            m_fullPath.append("/").append(name);
            look(level.folder.get(), name);
        }
        return std::move(m_result);
    }

private:
    // What is open at a time; the folders above those are found again by "..".
    static constexpr std::size_t mostOpen = 64;

    struct Level {
        Descriptor folder;
        FileIdentity identity;
        std::size_t pathLength;
        std::vector<std::string> names;
        std::size_t next = 0;
    };

    std::string relativePath() const {
        return m_fullPath.size() > m_rootLength ? m_fullPath.substr(m_rootLength + 1) : "";
    }

    void fail(int code) { m_result.unreadable.push_back({relativePath(), reasonFor(code)}); }

    void look(int folder, const std::string& name) {
        struct stat status {};
        if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            fail(errno);
            return;
        }
        InventoryEntry& entry = m_result.entries.emplace_back();
        entry.path = relativePath();
        entry.type = typeOf(status.st_mode);
        entry.size = entry.type == FileType::folder ? 0 : static_cast<std::uint64_t>(status.st_size);
        entry.permissions = static_cast<unsigned>(status.st_mode) & 07777U;
        entry.identity = identityOf(status);
        if (entry.type == FileType::symbolicLink) {
            if (const int code = readTarget(folder, name, entry.linkTarget)) {
                fail(code);
            }
        } else if (entry.type != FileType::other) {
            entry.isQuarantined = m_attributes.isQuarantined(folder, name, m_fullPath);
        }
        if (entry.type == FileType::folder) {
            descend(folder, name);
        }
    }

    void descend(int folder, const std::string& name) {
        if (m_fullPath.size() - m_rootLength > Inventory::longestPath) {
            m_result.tooDeep.push_back(relativePath());
            return;
        }
        Descriptor inner(::openat(folder, name.c_str(), howFoldersAreOpened));
        if (!inner) {
            fail(errno);
            return;
        }
        enter(std::move(inner));
    }

    void enter(Descriptor folder) {
        struct stat status {};
        Level level{.folder = std::move(folder), .identity = {}, .pathLength = m_fullPath.size(), .names = {}};
        int code = ::fstat(level.folder.get(), &status) == 0 ? 0 : errno;
        level.identity = identityOf(status);
        code = code != 0 ? code : namesIn(level.folder.get(), level.names);
        if (code != 0) {
            fail(code);
        }
        m_levels.push_back(std::move(level));
        if (m_levels.size() > mostOpen) {
            m_levels[m_levels.size() - mostOpen - 1].folder.reset();
            m_attributes.leave();
        }
    }

    void leave() {
        const Descriptor left = std::move(m_levels.back().folder);
        m_attributes.leave();
        m_levels.pop_back();
        if (m_levels.empty() || m_levels.back().folder) {
            return;
        }
        Level& level = m_levels.back();
        struct stat status {};
        level.folder.reset(::openat(left.get(), "..", howFoldersAreOpened));
        const int code = !level.folder                               ? errno
                         : ::fstat(level.folder.get(), &status) != 0 ? errno
                         : identityOf(status) == level.identity      ? 0
                                                                     : ENOENT;  // it was moved meanwhile
        if (code != 0) {
            m_fullPath.resize(level.pathLength);
            fail(code);
            level.next = level.names.size();
        }
    }

    EntryAttributes m_attributes;
    Inventory m_result;
    std::string m_fullPath;  // of what is looked at
    std::size_t m_rootLength;
    std::vector<Level> m_levels;
};

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

std::future<Inventory> startInventory(const std::string& root) {
    return std::async(std::launch::async, [root, &files = *platform::host().files] { return Walk(root, files).run(); });
}

Inventory takeInventory(const std::string& root) { return startInventory(root).get(); }

}  // namespace wickfield_bundle
