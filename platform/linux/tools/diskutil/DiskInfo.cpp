#include "platform/linux/tools/diskutil/DiskInfo.h"
#include "platform/posix/RealPath.h"

#include <dirent.h>
#include <libmount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>

#include <cerrno>
#include <fstream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <system_error>

namespace platform::linux_host {

namespace {

std::optional<std::string> firstLineOf(const std::string& path) {
    std::ifstream file(path);
    std::string line;
    return std::getline(file, line) ? std::optional(line) : std::nullopt;
}

// Names of links made by the device manager stand with their odd bytes as "\x20".
std::string unescaped(const std::string& name) {
    std::string plain;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (name[i] == '\\' && i + 3 < name.size() && name[i + 1] == 'x') {
            plain += static_cast<char>(std::strtoul(name.substr(i + 2, 2).c_str(), nullptr, 16));
            i += 3;
        } else {
            plain += name[i];
        }
    }
    return plain;
}

// The name of the link in the folder that leads to the device.
std::optional<std::string> linkTo(const std::string& device, const std::string& folder) {
    const std::unique_ptr<DIR, int (*)(DIR*)> links(::opendir(folder.c_str()), &::closedir);
    while (const dirent* entry = links ? ::readdir(links.get()) : nullptr) {
        if (entry->d_name[0] != '.' && posix::realPath(folder + "/" + entry->d_name) == device) {
            return unescaped(entry->d_name);
        }
    }
    return std::nullopt;
}

void addIfKnown(PropertyDictionary& info, const std::string& key, const std::optional<std::string>& text) {
    if (text) {
        info[key] = PropertyValue{*text};
    }
}

void addFlagIfKnown(PropertyDictionary& info, const std::string& key, const std::optional<std::string>& text,
                    const std::string& whenTrue) {
    if (text) {
        info[key] = PropertyValue{*text == whenTrue};
    }
}

// What the kernel tells of the block device, and of the whole disk when it is one part of it.
void addDevice(PropertyDictionary& info, const std::string& node) {
    struct stat status {};
    if (::stat(node.c_str(), &status) != 0 || !S_ISBLK(status.st_mode)) {
        return;
    }
    const std::string folder = posix::realPath("/sys/dev/block/" + std::to_string(major(status.st_rdev)) + ":" +
                                               std::to_string(minor(status.st_rdev)));
    const std::string device = posix::realPath(node);
    info["DeviceNode"] = PropertyValue{device};
    info["DeviceIdentifier"] = PropertyValue{device.substr(device.rfind('/') + 1)};
    addIfKnown(info, "VolumeName", linkTo(device, "/dev/disk/by-label"));
    addIfKnown(info, "VolumeUUID", linkTo(device, "/dev/disk/by-uuid"));
    addIfKnown(info, "DiskUUID", linkTo(device, "/dev/disk/by-partuuid"));
    if (folder.empty()) {
        return;
    }
    const bool isPart = firstLineOf(folder + "/partition").has_value();
    const std::string disk = isPart ? folder.substr(0, folder.rfind('/')) : folder;
    info["WholeDisk"] = PropertyValue{!isPart};
    info["ParentWholeDisk"] = PropertyValue{disk.substr(disk.rfind('/') + 1)};
    addIfKnown(info, "MediaName", firstLineOf(disk + "/device/model"));
    addFlagIfKnown(info, "RemovableMedia", firstLineOf(disk + "/removable"), "1");
    addFlagIfKnown(info, "SolidState", firstLineOf(disk + "/queue/rotational"), "0");
    addFlagIfKnown(info, "WritableMedia", firstLineOf(disk + "/ro"), "0");
    if (const auto bytes = firstLineOf(disk + "/queue/logical_block_size")) {
        info["DeviceBlockSize"] = PropertyValue{std::int64_t{std::atoll(bytes->c_str())}};
    }
}

void addSizes(PropertyDictionary& info, const std::string& mountPoint) {
    struct statvfs status {};
    if (::statvfs(mountPoint.c_str(), &status) != 0) {
        return;
    }
    const auto unit = static_cast<std::int64_t>(status.f_frsize);
    const auto total = static_cast<std::int64_t>(status.f_blocks) * unit;
    info["TotalSize"] = PropertyValue{total};
    info["VolumeSize"] = PropertyValue{total};
    info["FreeSpace"] = PropertyValue{static_cast<std::int64_t>(status.f_bavail) * unit};
    info["VolumeAllocationBlockSize"] = PropertyValue{unit};
    info["WritableVolume"] = PropertyValue{(status.f_flag & ST_RDONLY) == 0};
}

}  // namespace

PropertyDictionary diskInfo(const std::string& mountPoint) {
    const std::string real = posix::realPath(mountPoint);
    if (real.empty()) {
        throw std::runtime_error(mountPoint + ": " + std::generic_category().message(errno));
    }
    const std::unique_ptr<libmnt_table, void (*)(libmnt_table*)> mounts(
        ::mnt_new_table_from_file("/proc/self/mountinfo"), &::mnt_unref_table);
    if (!mounts) {
        throw std::runtime_error("the mounted file systems cannot be listed");
    }
    // Of several at one place the last one is seen.
    libmnt_fs* found = ::mnt_table_find_target(mounts.get(), real.c_str(), MNT_ITER_BACKWARD);
    if (found == nullptr) {
        throw std::runtime_error(mountPoint + ": no file system is mounted there");
    }
    PropertyDictionary info;
    info["MountPoint"] = PropertyValue{real};
    if (const char* type = ::mnt_fs_get_fstype(found)) {
        info["FilesystemType"] = PropertyValue{std::string(type)};
    }
    addSizes(info, real);
    if (const char* source = ::mnt_fs_get_srcpath(found)) {
        addDevice(info, source);
    }
    return info;
}

}  // namespace platform::linux_host
