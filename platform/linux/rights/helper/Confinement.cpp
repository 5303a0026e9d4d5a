#include "platform/linux/rights/helper/Confinement.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <linux/magic.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <utility>

#include "platform/linux/rights/helper/PathWalk.h"
#include "platform/linux/rights/helper/RenameOnly.h"

namespace platform::rights {

namespace {

using Rights = std::uint64_t;
using Ends = PathWalk::Ends;

constexpr Rights truncation = Rights{1} << 14U;  // LANDLOCK_ACCESS_FS_TRUNCATE of newer headers
constexpr Rights listing = LANDLOCK_ACCESS_FS_READ_DIR;
constexpr Rights reading = LANDLOCK_ACCESS_FS_READ_FILE | listing;
constexpr Rights removal = LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE;
constexpr Rights writing = LANDLOCK_ACCESS_FS_WRITE_FILE | truncation | LANDLOCK_ACCESS_FS_MAKE_REG;
constexpr Rights copying = removal | writing | LANDLOCK_ACCESS_FS_MAKE_CHAR | LANDLOCK_ACCESS_FS_MAKE_DIR |
                           LANDLOCK_ACCESS_FS_MAKE_SOCK | LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_BLOCK |
                           LANDLOCK_ACCESS_FS_MAKE_SYM;
constexpr Rights changes = copying | LANDLOCK_ACCESS_FS_REFER;

struct Operand {
    Ends ends;
    Rights needs;  // 0: it is only read
};

struct FileCommand {
    std::string_view tool;
    std::array<Operand, 2> operands;  // the last arguments
    std::size_t count;
    bool setsAttributes;  // modes, owners or times, by path
};

// Both sides of a move have the same rights, or the kernel would not let anything be renamed from one to the other.
constexpr std::array<FileCommand, 5> fileCommands{{
    {"rm", {{{Ends::atParent, removal}}}, 1, false},
    {"mv", {{{Ends::atParent, changes}, {Ends::atFolder, changes}}}, 2, true},
    {"cp", {{{Ends::atParent, 0}, {Ends::atFolder, copying}}}, 2, true},
    {"mkdir", {{{Ends::atDeepest, LANDLOCK_ACCESS_FS_MAKE_DIR}}}, 1, false},
    {"touch", {{{Ends::atFolder, writing}}}, 1, true},
}};

const FileCommand* fileCommandOf(std::string_view tool) {
    const std::size_t name = tool.rfind('/') + 1;
    const auto folder = tool.substr(0, name);
    if (folder != "/bin/" && folder != "/usr/bin/") {
        return nullptr;
    }
    const auto* found = std::ranges::find(fileCommands, tool.substr(name), &FileCommand::tool);
    return found != fileCommands.end() ? found : nullptr;
}

Rights knownTo(int version) {
    constexpr int knowsRefer = 2;
    constexpr int knowsTruncation = 3;
    Rights known = changes | reading;
    if (version < knowsRefer) {
        known &= ~Rights{LANDLOCK_ACCESS_FS_REFER};
    }
    if (version < knowsTruncation) {
        known &= ~truncation;
    }
    return version < 1 ? 0 : known;
}

// The program that will run must be the system's, whatever else stands under its name.
int checkTool(const std::string& path) {
    const auto found = walk(path, Ends::atFolder);
    if (const int* error = std::get_if<int>(&found)) {
        return *error;
    }
    const auto& tool = std::get<PathWalk>(found);
    if (!tool.item) {
        return ENOENT;
    }
    const bool isOurs = S_ISREG(tool.item->st_mode) && tool.item->st_uid == 0 &&
                        (tool.item->st_mode & (S_IWGRP | S_IWOTH)) == 0 && tool.isRootsOwn;
    return isOurs ? 0 : EPERM;
}

bool holdsFolder(const PathWalk& walk, const std::string& name) {
    struct stat found {};
    return walk.endsInFolder() && ::fstatat(walk.folder.get(), name.c_str(), &found, AT_SYMLINK_NOFOLLOW) == 0 &&
           S_ISDIR(found.st_mode);
}

std::string nameOf(std::string_view path) {
    path = path.substr(0, path.find_last_not_of('/') + 1);
    return std::string(path.substr(path.rfind('/') + 1));
}

bool haveOneRuler(const PathWalk& one, const PathWalk& other) { return one.ruler && one.ruler == other.ruler; }

// One folder that holds the other would leave whoever rules that one free to lead the tool about in the first.
bool reachesInto(const PathWalk& outer, const PathWalk& inner) {
    return !inner.isRootsOwn && !haveOneRuler(outer, inner) && isBelow(inner.folder, outer.folder) &&
           !isBelow(outer.folder, inner.folder);
}

// Whether the kernel moves an item from one folder to the other without copying it.
bool canRename(const PathWalk& from, const PathWalk& to) {
    struct statx source {};
    struct statx target {};
    struct statfs system {};
    constexpr unsigned wanted = STATX_INO | STATX_MNT_ID;
    return ::statx(from.folder.get(), "", AT_EMPTY_PATH, wanted, &source) == 0 &&
           ::statx(to.folder.get(), "", AT_EMPTY_PATH, wanted, &target) == 0 &&
           ::fstatfs(from.folder.get(), &system) == 0 && system.f_type != OVERLAYFS_SUPER_MAGIC &&
           source.stx_mnt_id == target.stx_mnt_id && source.stx_dev_major == target.stx_dev_major &&
           source.stx_dev_minor == target.stx_dev_minor;
}

// What a tool reads to get going.
void addSystemPlaces(Confinement& confinement) {
    const auto add = [&](const char* place, Rights allowed) {
        confinement.add(posix::Descriptor(::open(place, O_PATH | O_CLOEXEC)), allowed);
    };
    for (const char* folder : {"/usr", "/bin", "/lib", "/lib32", "/lib64"}) {
        add(folder, reading);
    }
    add("/etc/ld.so.cache", reading & ~listing);
}

bool leadsNowhere(int error) { return error == ENOENT || error == ENOTDIR || error == ELOOP || error == ENAMETOOLONG; }

class Plan {
public:
    Plan(const FileCommand& command, int landlock) : m_command(command), m_known(knownTo(landlock)) {}

    int lookAt(const std::vector<std::string>& command) {
        const std::size_t first = command.size() - m_command.count;
        for (std::size_t i = 0; i < m_command.count; ++i) {
            auto found = walkTo(command[first + i], m_command.operands[i].ends, command[first]);
            const int* const error = std::get_if<int>(&found);
            if (error == nullptr) {
                m_walks.push_back(std::move(std::get<PathWalk>(found)));
            } else if (m_known != 0 && leadsNowhere(*error)) {
                m_isInVain = true;
            } else {
                return *error;
            }
        }
        if (m_isInVain) {
            return 0;
        }
        const bool isSafe = std::ranges::all_of(m_walks, &PathWalk::isRootsOwn) && !m_isMerge;
        const bool isTangled =
            isMove() && (reachesInto(m_walks.front(), m_walks.back()) || reachesInto(m_walks.back(), m_walks.front()));
        return (m_known == 0 && !isSafe) || isTangled ? EPERM : 0;
    }

    std::variant<std::optional<Confinement>, int> confinement() {
        Confinement made;
        if (m_isInVain) {
            changeNothing(made);
            return made;
        }
        const bool guardsReading = m_walks.size() > 1;
        made.watched = (changes | (guardsReading ? reading : 0)) & m_known;
        if (guardsReading) {
            addSystemPlaces(made);
        }
        const bool isExposed = m_command.setsAttributes && (m_isMerge || !m_walks.back().isRootsOwn);
        made.onlyRenames = isExposed && isRename();
        if (isExposed && !made.onlyRenames && !(made.shield = shield())) {
            return EACCES;
        }
        for (std::size_t i = 0; i < m_walks.size(); ++i) {
            const Rights needs = m_command.operands[i].needs;
            const Rights allowed = needs == 0 || isMove() ? needs | reading : needs;
            made.add(std::move(m_walks[i].folder), allowed);
        }
        return made;
    }

private:
    // A folder that is missing can be there by the time the tool looks for it, and lead anywhere.
    void changeNothing(Confinement& made) const {
        made.watched = changes & m_known;  // renaming too
        made.onlyRenames = canBeHeldToRenaming();
        if (m_command.setsAttributes && !made.onlyRenames) {
            made.shield = MountShield::around({});
        }
    }

    // Whoever rules where an item is moved to must not lead the tool back to the folder that it comes from, which is
    // not read-only to it either.
    std::optional<MountShield> shield() {
        std::vector<int> changed;
        for (std::size_t i = 0; i < m_walks.size(); ++i) {
            if (m_command.operands[i].needs != 0) {
                changed.push_back(m_walks[i].folder.get());
            }
        }
        auto made = MountShield::around(changed);
        PathWalk& end = m_walks.back();
        const bool mayStray = isMove() && !haveOneRuler(m_walks.front(), end);
        const bool isMade = made && (!mayStray || made->isolateLast(std::move(end.foreign), end.beyondForeign));
        return isMade ? std::move(made) : std::nullopt;
    }

    // What a move replaces is the item that stands there, a link too, unless it leads to a folder. What is copied to a
    // folder may be merged with one that this one holds.
    std::variant<PathWalk, int> walkTo(const std::string& path, Ends ends, const std::string& source) {
        auto found = walk(path, ends);
        const auto* end = std::get_if<PathWalk>(&found);
        if (end == nullptr || ends != Ends::atFolder) {
            return found;
        }
        if (isMove() && !end->endsInFolder()) {
            return walk(path, Ends::atParent);
        }
        if (m_command.tool == "cp" && holdsFolder(*end, nameOf(source))) {
            m_isMerge = true;
            return walk(path + "/" + nameOf(source), ends);
        }
        return found;
    }

    bool isMove() const { return m_command.tool == "mv"; }
    bool isRename() const {
        return isMove() && (m_known & LANDLOCK_ACCESS_FS_REFER) != 0 && canBeHeldToRenaming() &&
               canRename(m_walks.front(), m_walks.back());
    }

    const FileCommand& m_command;
    const Rights m_known;
    std::vector<PathWalk> m_walks;
    bool m_isMerge = false;   // of what others may own in part with what is copied
    bool m_isInVain = false;  // the tool will not find what it is to work on, and is left to say so
};

// Tools need no more rights on their way than they are given, and Landlock asks for this where root is not all-mighty.
bool giveUpMoreRights() { return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0; }

// The descriptor that is opened here closes when the tool takes over.
int enterLandlock(const Confinement& confinement) {
    const landlock_ruleset_attr rules{.handled_access_fs = confinement.watched};
    const int ruleset = static_cast<int>(::syscall(SYS_landlock_create_ruleset, &rules, sizeof rules, 0));
    if (ruleset < 0) {
        return errno;
    }
    for (const auto& place : confinement.places) {
        const landlock_path_beneath_attr below{.allowed_access = place.allowed, .parent_fd = place.item.get()};
        if (::syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &below, 0) != 0) {
            return errno;
        }
    }
    return ::syscall(SYS_landlock_restrict_self, ruleset, 0) == 0 ? 0 : errno;
}

}  // namespace

void Confinement::add(posix::Descriptor item, std::uint64_t allowed) {
    if (item && (allowed & watched) != 0) {
        places.push_back({std::move(item), allowed & watched});
    }
}

int landlockVersion() {
    static const long version = ::syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    return static_cast<int>(std::max(version, 0L));
}

std::variant<std::optional<Confinement>, int> confinementFor(const std::vector<std::string>& command, int landlock) {
    const FileCommand* const tool = command.empty() ? nullptr : fileCommandOf(command.front());
    if (tool == nullptr) {
        return std::nullopt;
    }
    if (command.size() <= tool->count) {
        return EINVAL;
    }
    Plan plan(*tool, landlock);
    int error = checkTool(command.front());
    if (error == 0) {
        error = plan.lookAt(command);
    }
    if (error != 0) {
        return error;
    }
    return plan.confinement();
}

int enterView(const Confinement& confinement) noexcept { return confinement.shield ? confinement.shield->raise() : 0; }

int enterConfinement(const Confinement& confinement) noexcept {
    int error = giveUpMoreRights() ? 0 : errno;
    if (error == 0 && confinement.watched != 0) {
        error = enterLandlock(confinement);
    }
    return error == 0 && confinement.onlyRenames ? holdToRenaming() : error;
}

}  // namespace platform::rights
