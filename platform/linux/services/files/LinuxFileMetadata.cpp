#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <array>
#include <cerrno>
#include <chrono>

#include "platform/linux/services/files/LinuxFileManager.h"
#include "platform/posix/FileErrors.h"

namespace platform::linux_host {

namespace {

constexpr const char* finderInfoAttribute = "user.com.apple.FinderInfo";
// The label is three bits of the big-endian flags at offset 8.
constexpr std::size_t labelByte = 9;
constexpr unsigned labelShift = 1;
constexpr unsigned labelMask = 7;

using FinderInfo = std::array<unsigned char, 32>;

// What an item has of it, the rest empty; an errno, 0 when it has all or none of it.
int readFinderInfo(const std::string& path, FinderInfo& info) {
    info = {};
    if (::lgetxattr(path.c_str(), finderInfoAttribute, info.data(), info.size()) >= 0) {
        return 0;
    }
    // A link and a file system without attributes have none either.
    const bool hasNone = errno == ENODATA || errno == ENOTSUP || errno == EPERM;
    return hasNone ? 0 : errno;
}

int writeFinderInfo(const std::string& path, const FinderInfo& info) {
    if (info == FinderInfo{}) {
        return ::lremovexattr(path.c_str(), finderInfoAttribute) == 0 || errno == ENODATA ? 0 : errno;
    }
    return ::lsetxattr(path.c_str(), finderInfoAttribute, info.data(), info.size(), 0) == 0 ? 0 : errno;
}

std::optional<std::string> hostName(const std::string& name) {
    if (name.empty() || name.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    return "user." + name;
}

}  // namespace

Failure LinuxFileManager::setModificationDate(const std::string& path, Date date) {
    constexpr const char* doing = "set the modification date of";
    if (Failure refused = posix::refusedPath(doing, path)) {
        return refused;
    }
    const auto sinceEpoch = date.time_since_epoch();
    const auto seconds = std::chrono::floor<std::chrono::seconds>(sinceEpoch);
    const auto rest = std::chrono::duration_cast<std::chrono::nanoseconds>(sinceEpoch - seconds);
    const timespec times[] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT},
                              {.tv_sec = static_cast<time_t>(seconds.count()), .tv_nsec = rest.count()}};
    return ::utimensat(AT_FDCWD, path.c_str(), times, 0) == 0 ? Failure{} : posix::fileError(doing, path, errno);
}

std::variant<std::size_t, Error> LinuxFileManager::readExtendedAttribute(const std::string& path,
                                                                         const std::string& name,
                                                                         std::span<char> room) {
    constexpr const char* doing = "read an extended attribute of";
    if (Failure refused = posix::refusedPath(doing, path)) {
        return *refused;
    }
    const auto attribute = hostName(name);
    if (!attribute) {
        return posix::fileError(doing, path, EINVAL);
    }
    const ssize_t size = ::getxattr(path.c_str(), attribute->c_str(), room.data(), room.size());
    if (size < 0) {
        return posix::fileError(doing, path, errno);
    }
    return static_cast<std::size_t>(size);
}

Failure LinuxFileManager::setExtendedAttribute(const std::string& path, const std::string& name,
                                               std::span<const char> value) {
    constexpr const char* doing = "set an extended attribute of";
    if (Failure refused = posix::refusedPath(doing, path)) {
        return refused;
    }
    const auto attribute = hostName(name);
    if (!attribute) {
        return posix::fileError(doing, path, EINVAL);
    }
    const bool done = ::setxattr(path.c_str(), attribute->c_str(), value.data(), value.size(), 0) == 0;
    return done ? Failure{} : posix::fileError(doing, path, errno);
}

std::optional<int> LinuxFileManager::labelNumber(const std::string& path) {
    struct stat status {};
    if (posix::refusedPath("read the label of", path) || ::lstat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    FinderInfo info;
    if (readFinderInfo(path, info) != 0) {
        return 0;
    }
    return static_cast<int>((info[labelByte] >> labelShift) & labelMask);
}

Failure LinuxFileManager::setLabelNumber(const std::string& path, long number) {
    constexpr const char* doing = "set the label of";
    if (Failure refused = posix::refusedPath(doing, path)) {
        return refused;
    }
    if (number < 0 || number > static_cast<long>(labelMask)) {
        return posix::fileError(doing, path, EINVAL);
    }
    FinderInfo info;
    int code = readFinderInfo(path, info);
    if (code == 0) {
        const unsigned others = info[labelByte] & ~(labelMask << labelShift);
        info[labelByte] = static_cast<unsigned char>(others | (static_cast<unsigned>(number) << labelShift));
        code = writeFinderInfo(path, info);
    }
    return code == 0 ? Failure{} : posix::fileError(doing, path, code);
}

}  // namespace platform::linux_host
