#include "platform/linux/rights/helper/Confinement.h"

#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string_view>
#include <utility>

namespace platform::rights {

namespace {

struct FileCommand {
    std::string_view tool;
    std::size_t items;  // how many of the last arguments are paths
};

constexpr std::array<FileCommand, 5> fileCommands{{{"rm", 1}, {"mv", 2}, {"cp", 2}, {"mkdir", 1}, {"touch", 1}}};

const FileCommand* fileCommandOf(std::string_view tool) {
    const std::size_t name = tool.rfind('/') + 1;
    const auto folder = tool.substr(0, name);
    if (folder != "/bin/" && folder != "/usr/bin/") {
        return nullptr;
    }
    const auto* found = std::ranges::find(fileCommands, tool.substr(name), &FileCommand::tool);
    return found != fileCommands.end() ? found : nullptr;
}

}  // namespace

std::variant<std::optional<Confinement>, int> confinementFor(const std::vector<std::string>& command) {
    const FileCommand* const tool = fileCommandOf(command.front());
    if (tool == nullptr) {
        return std::nullopt;
    }
    if (command.size() <= tool->items) {
        return EINVAL;
    }
    Confinement confinement;
    for (std::size_t i = command.size() - tool->items; i < command.size(); ++i) {
        std::string folder = command[i];
        posix::Descriptor opened;
        while (!opened && folder.size() > 1) {
            folder.resize(std::max<std::size_t>(folder.rfind('/'), 1));
            opened.reset(::open(folder.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
        }
        if (!opened) {
            return errno;
        }
        confinement.folders.push_back(std::move(opened));
    }
    return confinement;
}

int enterConfinement(const Confinement& confinement) noexcept {
    constexpr __u64 changes = LANDLOCK_ACCESS_FS_WRITE_FILE | LANDLOCK_ACCESS_FS_REMOVE_DIR |
                              LANDLOCK_ACCESS_FS_REMOVE_FILE | LANDLOCK_ACCESS_FS_MAKE_CHAR |
                              LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_MAKE_SOCK |
                              LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_BLOCK |
                              LANDLOCK_ACCESS_FS_MAKE_SYM | LANDLOCK_ACCESS_FS_REFER;
    const landlock_ruleset_attr rules{.handled_access_fs = changes};
    const int ruleset = static_cast<int>(::syscall(SYS_landlock_create_ruleset, &rules, sizeof rules, 0));
    if (ruleset < 0) {
        return errno;
    }
    for (const auto& folder : confinement.folders) {
        const landlock_path_beneath_attr below{.allowed_access = changes, .parent_fd = folder.get()};
        if (::syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &below, 0) != 0) {
            return errno;
        }
    }
    return ::syscall(SYS_landlock_restrict_self, ruleset, 0) == 0 ? 0 : errno;
}

}  // namespace platform::rights
