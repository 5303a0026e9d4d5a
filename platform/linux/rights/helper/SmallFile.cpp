#include "platform/linux/rights/helper/SmallFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <optional>
#include <string_view>
#include <utility>
#include <variant>

#include "platform/linux/rights/helper/PathWalk.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/WriteAll.h"

namespace platform::rights {

namespace {

constexpr off_t mostBytes = off_t{1} << 20U;
constexpr std::size_t operands = 4;  // where SOURCE and DESTINATION begin

struct Item {
    posix::Descriptor folder;
    std::string name;
};

bool isCopyCommand(const std::vector<std::string>& command) {
    const bool isTool = command.size() == operands + 2 && (command[0] == "/bin/cp" || command[0] == "/usr/bin/cp");
    return isTool && command[1] == "-f" && command[2] == "-p" && command[3] == "-R";
}

std::optional<Item> itemAt(const std::string& path) {
    Item item{.folder = {}, .name = path.substr(path.rfind('/') + 1)};
    auto found = walk(path, PathWalk::Ends::atParent);
    auto* const end = std::get_if<PathWalk>(&found);
    if (end == nullptr || item.name.empty()) {
        return std::nullopt;
    }
    item.folder = std::move(end->folder);
    return item;
}

// What lies in an access control list is left to a tool that knows them.
bool hasAccessControlList(int file) {
    std::array<char, 4096> names{};
    const ssize_t size = ::flistxattr(file, names.data(), names.size());
    if (size < 0) {
        return errno != ENOTSUP;
    }
    return std::string_view(names.data(), static_cast<std::size_t>(size)).find("_acl") != std::string_view::npos;
}

bool isPlain(const struct stat& file) {
    constexpr off_t block = 512;  // the unit of st_blocks
    const bool hasHoles = file.st_blocks * block < file.st_size;
    return S_ISREG(file.st_mode) && file.st_size <= mostBytes && !hasHoles;
}

// Only what is looked at first and is a file is opened: opening a device can have effects, and a FIFO's can last.
posix::Descriptor openPlainFile(const Item& item, struct stat& status) {
    if (::fstatat(item.folder.get(), item.name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 || !isPlain(status)) {
        return {};
    }
    posix::Descriptor file(
        ::openat(item.folder.get(), item.name.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    const bool isStillPlain = file && ::fstat(file.get(), &status) == 0 && isPlain(status);
    return isStillPlain && !hasAccessControlList(file.get()) ? std::move(file) : posix::Descriptor();
}

// False also for a file that grows beyond the limit meanwhile.
bool copyBytes(int from, int to) {
    static std::array<char, std::size_t{64} << 10U> buffer;
    off_t copied = 0;
    for (;;) {
        const ssize_t got = ::read(from, buffer.data(), buffer.size());
        if (got <= 0) {
            return got == 0;
        }
        copied += got;
        std::string_view bytes(buffer.data(), static_cast<std::size_t>(got));
        if (copied > mostBytes || posix::writeAll(to, bytes) != 0) {
            return false;
        }
    }
}

// The owner goes first: a change of it takes the bits away that let a program run as somebody else.
bool setAttributes(int file, const struct stat& wanted) {
    constexpr mode_t permissions = 07777;
    const std::array<timespec, 2> times{wanted.st_atim, wanted.st_mtim};
    return ::fchown(file, wanted.st_uid, wanted.st_gid) == 0 && ::fchmod(file, wanted.st_mode & permissions) == 0 &&
           ::futimens(file, times.data()) == 0;
}

}  // namespace

bool copiesSmallFile(const std::vector<std::string>& command) {
    if (!isCopyCommand(command)) {
        return false;
    }
    const auto source = itemAt(command[operands]);
    const auto destination = source ? itemAt(command[operands + 1]) : std::nullopt;
    if (!destination) {
        return false;
    }
    struct stat status {};
    const posix::Descriptor from = openPlainFile(*source, status);
    if (!from || ::faccessat(destination->folder.get(), destination->name.c_str(), F_OK, AT_SYMLINK_NOFOLLOW) == 0) {
        return false;
    }
    const posix::Descriptor to(
        ::openat(destination->folder.get(), ".", O_TMPFILE | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR));
    return to && copyBytes(from.get(), to.get()) && !hasAccessControlList(to.get()) &&
           setAttributes(to.get(), status) &&
           ::linkat(to.get(), "", destination->folder.get(), destination->name.c_str(), AT_EMPTY_PATH) == 0;
}

}  // namespace platform::rights
