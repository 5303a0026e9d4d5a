#include "tools/wickfield-bundle/check/InventoryWalk.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <numeric>
#include <system_error>
#include <utility>

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

// 0 or an errno; the names sorted by bytes.
int list(int folder, FileIdentity& identity, std::vector<std::string>& names) {
    struct stat status {};
    if (::fstat(folder, &status) != 0) {
        return errno;
    }
    identity = identityOf(status);
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

// How many folders one walk holds open at a time: the others walk as well, and the program opens other files.
std::size_t mostOpenFolders() {
    constexpr rlim_t fewest = 2;
    constexpr rlim_t most = 64;
    constexpr rlim_t part = 8;
    struct rlimit limit {};
    return ::getrlimit(RLIMIT_NOFILE, &limit) == 0 ? std::clamp(limit.rlim_cur / part, fewest, most) : most;
}

class Walk {
public:
    Walk(const std::string& root, EntryAttributes& attributes, FolderShares& shares)
        : m_attributes(attributes), m_shares(shares), m_rootLength(root.size()) {}

    void run(FolderShare share) {
        m_part = share.part;
        m_fullPath = std::move(share.path);
        m_levels.push_back({.folder = std::move(share.folder),
                            .identity = share.identity,
                            .pathLength = m_fullPath.size(),
                            .names = std::move(share.names)});
        while (!m_levels.empty()) {
            if (m_shares.areWanted()) {
                giveShare();
            }
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
    }

private:
    struct Level {
        Descriptor folder;
        FileIdentity identity = {};
        std::size_t pathLength = 0;
        std::vector<std::string> names = {};
        std::size_t next = 0;
        std::vector<InventoryPart*> given = {};  // of the names that were last, from the end
    };

    // The second half of what is left of the uppermost folder that can be divided: there is most below it.
    void giveShare() {
        const auto canBeDivided = [](const Level& level) {
            return level.folder && level.names.size() - level.next >= 2;
        };
        const auto level = std::ranges::find_if(m_levels, canBeDivided);
        if (level == m_levels.end()) {
            return;
        }
        Descriptor folder(::fcntl(level->folder.get(), F_DUPFD_CLOEXEC, 0));
        if (!folder) {
            return;
        }
        const auto half = level->names.begin() + static_cast<std::ptrdiff_t>((level->next + level->names.size()) / 2);
        level->given.push_back(&m_shares.addPart());
        m_shares.give({.folder = std::move(folder),
                       .identity = level->identity,
                       .path = m_fullPath.substr(0, level->pathLength),
                       .names = {std::move_iterator(half), std::move_iterator(level->names.end())},
                       .part = level->given.back()});
        level->names.erase(half, level->names.end());
    }

    std::string relativePath() const {
        return m_fullPath.size() > m_rootLength ? m_fullPath.substr(m_rootLength + 1) : "";
    }

    void fail(int code) { m_part->found.unreadable.push_back({relativePath(), reasonFor(code)}); }

    void look(int folder, const std::string& name) {
        struct stat status {};
        if (::fstatat(folder, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
            fail(errno);
            return;
        }
        InventoryEntry& entry = m_part->found.entries.emplace_back();
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
            entry.isPackage = m_attributes.isPackage(folder, name, m_fullPath);
            descend(folder, name);
        }
    }

    void descend(int folder, const std::string& name) {
        if (m_fullPath.size() - m_rootLength > Inventory::longestPath) {
            m_part->found.tooDeep.push_back(relativePath());
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
        Level level{.folder = std::move(folder), .pathLength = m_fullPath.size()};
        if (const int code = list(level.folder.get(), level.identity, level.names)) {
            fail(code);
        }
        m_levels.push_back(std::move(level));
        if (m_levels.size() > m_mostOpen) {
            m_levels[m_levels.size() - m_mostOpen - 1].folder.reset();
            m_attributes.leave();
        }
    }

    void leave() {
        auto& given = m_levels.back().given;
        for (; !given.empty(); given.pop_back()) {
            m_part->others.emplace_back(m_part->found.entries.size(), given.back());
        }
        const Descriptor left = std::move(m_levels.back().folder);
        m_attributes.leave();
        m_levels.pop_back();
        if (m_levels.empty() || m_levels.back().folder) {
            return;
        }
        Level& level = m_levels.back();
        struct stat status {};
        level.folder.reset(::openat(left.get(), "..", howFoldersAreOpened));
        const int code = !left                                       ? ENOENT  // what lay in it was moved meanwhile
                         : !level.folder                             ? errno
                         : ::fstat(level.folder.get(), &status) != 0 ? errno
                         : identityOf(status) == level.identity      ? 0
                                                                     : ENOENT;  // it was moved meanwhile
        if (code != 0) {
            m_fullPath.resize(level.pathLength);
            fail(code);
            level.next = level.names.size();
        }
    }

    EntryAttributes& m_attributes;
    FolderShares& m_shares;
    std::size_t m_rootLength;
    std::size_t m_mostOpen = mostOpenFolders();  // the folders above those are found again by ".."
    InventoryPart* m_part = nullptr;
    std::string m_fullPath;  // of what is looked at
    std::vector<Level> m_levels;
};

}  // namespace

InventoryPart& FolderShares::addPart() {
    const std::lock_guard lock(m_mutex);
    return m_parts.emplace_back();
}

std::size_t FolderShares::countEntries() const {
    return std::accumulate(
        m_parts.begin(), m_parts.end(), std::size_t{0},
        [](std::size_t count, const InventoryPart& part) { return count + part.found.entries.size(); });
}

void FolderShares::give(FolderShare share) {
    {
        const std::lock_guard lock(m_mutex);
        m_shares.push_back(std::move(share));
        --m_wanted;
    }
    m_changed.notify_one();
}

void FolderShares::takeAll(const std::function<void(FolderShare)>& look) {
    // Also when looking ends by an exception, for which the others must not wait.
    struct Busy {
        FolderShares& shares;

        ~Busy() {
            const std::lock_guard lock(shares.m_mutex);
            --shares.m_busy;
            shares.m_changed.notify_all();
        }
    };
    for (;;) {
        std::unique_lock lock(m_mutex);
        ++m_wanted;
        m_changed.wait(lock, [this] { return !m_shares.empty() || m_busy == 0; });
        if (m_shares.empty()) {
            return;
        }
        FolderShare share = std::move(m_shares.back());
        m_shares.pop_back();
        ++m_busy;
        lock.unlock();
        const Busy busy{*this};
        look(std::move(share));
    }
}

void giveWhole(const std::string& root, FolderShares& shares, InventoryPart& part) {
    FolderShare whole{.path = root, .part = &part};
    whole.folder.reset(::open(root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (const int code = whole.folder ? list(whole.folder.get(), whole.identity, whole.names) : errno) {
        part.found.unreadable.push_back({"", reasonFor(code)});
    }
    if (whole.folder) {
        shares.give(std::move(whole));
    }
}

void walkFolders(const std::string& root, FolderShares& shares) {
    EntryAttributes attributes(*platform::host().files);
    Walk walk(root, attributes, shares);
    shares.takeAll([&](FolderShare share) { walk.run(std::move(share)); });
}

}  // namespace wickfield_bundle
