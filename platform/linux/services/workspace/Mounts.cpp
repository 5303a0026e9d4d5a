#include "platform/linux/services/workspace/Mounts.h"

#include <fcntl.h>
#include <linux/stat.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <optional>
#include <utility>

#include "platform/posix/PathParts.h"
#include "platform/posix/RealPath.h"

namespace platform::linux_host {

namespace {

constexpr std::array<std::string_view, 27> localTypes{
    "apfs",    "bcachefs", "btrfs",    "erofs",    "exfat", "ext2",  "ext3",   "ext4", "f2fs",
    "fuseblk", "hfs",      "hfsplus",  "iso9660",  "jfs",   "msdos", "nilfs2", "ntfs", "ntfs3",
    "overlay", "ramfs",    "reiserfs", "squashfs", "tmpfs", "udf",   "vfat",   "xfs",  "zfs"};

// The next word of a line; the line keeps the rest.
std::string_view takeWord(std::string_view& line) {
    const auto end = std::min(line.find(' '), line.size());
    const std::string_view word = line.substr(0, end);
    line.remove_prefix(std::min(end + 1, line.size()));
    return word;
}

bool isOctal(char c) { return c >= '0' && c <= '7'; }

// Blanks, tabs, newlines and backslashes stand there as a backslash and three octal digits.
std::string unescaped(std::string_view text) {
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 3 < text.size() && isOctal(text[i + 1]) && isOctal(text[i + 2]) &&
            isOctal(text[i + 3])) {
            plain += static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + (text[i + 3] - '0'));
            i += 3;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

// 36 35 98:0 /root /mount/point rw,noatime master:1 - ext4 /dev/sda1 rw; between the options and the dash stand any
// number of words.
std::optional<std::string> localMountPoint(std::string_view line) {
    for (int skipped = 0; skipped < 4; ++skipped) {
        takeWord(line);
    }
    const std::string_view mountPoint = takeWord(line);
    while (!line.empty() && takeWord(line) != "-") {
    }
    const std::string_view type = takeWord(line);
    if (mountPoint.empty() || std::find(localTypes.begin(), localTypes.end(), type) == localTypes.end()) {
        return std::nullopt;
    }
    return unescaped(mountPoint);
}

std::optional<std::uint64_t> mountOf(int folder, const char* path, int flags) {
    struct statx status {};
    if (::statx(folder, path, flags, STATX_MNT_ID, &status) != 0) {
        return std::nullopt;
    }
    if ((status.stx_mask & STATX_MNT_ID) != 0) {
        return status.stx_mnt_id;
    }
    return (std::uint64_t{status.stx_dev_major} << 32U) | status.stx_dev_minor;  // kernels that do not tell
}

std::optional<std::uint64_t> mountOf(const std::string& path) { return mountOf(AT_FDCWD, posix::systemPath(path), 0); }

}  // namespace

std::vector<std::string> localMountPoints(std::string_view mountInfo) {
    std::vector<std::string> points;
    while (!mountInfo.empty()) {
        const auto end = std::min(mountInfo.find('\n'), mountInfo.size());
        if (auto point = localMountPoint(mountInfo.substr(0, end))) {
            points.push_back(std::move(*point));
        }
        mountInfo.remove_prefix(std::min(end + 1, mountInfo.size()));
    }
    points.emplace_back("/");
    std::sort(points.begin(), points.end(), std::greater<>());
    points.erase(std::unique(points.begin(), points.end()), points.end());
    return points;
}

std::vector<std::string> localMountPoints() {
    std::ifstream file("/proc/self/mountinfo", std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    return localMountPoints(std::string_view(text));
}

std::string mountPointOf(const std::string& folder) {
    std::string point = posix::realPath(folder);
    if (point.empty()) {
        return {};
    }
    const auto mount = mountOf(point);
    while (mount && point != "/" && mountOf(posix::splitPath(point).folder) == mount) {
        point = posix::splitPath(point).folder;
    }
    return mount ? point : std::string();
}

bool areOnSameMount(const std::string& folder, const std::string& other) {
    const auto mount = mountOf(folder);
    return mount && mount == mountOf(other);
}

bool areOnSameMount(int folder, int other) {
    const auto mount = mountOf(folder, "", AT_EMPTY_PATH);
    return mount && mount == mountOf(other, "", AT_EMPTY_PATH);
}

}  // namespace platform::linux_host
