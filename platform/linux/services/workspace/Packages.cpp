#include "platform/linux/services/workspace/Packages.h"

#include <sys/stat.h>
#include <sys/xattr.h>

#include <algorithm>
#include <array>

#include "platform/posix/PathParts.h"

namespace platform::linux_host {

namespace {

// In lower case.
constexpr std::array<std::string_view, 30> bundleExtensions{
    "aaxplugin", "action",     "app",        "appex",       "bundle",
    "clap",      "component",  "dictionary", "dpm",         "driver",
    "kext",      "mdimporter", "menu",       "mpkg",        "osax",
    "pkg",       "plugin",     "prefpane",   "qlgenerator", "rtfd",
    "saver",     "scptd",      "service",    "spreporter",  "systemextension",
    "vst",       "vst3",       "wdgt",       "workflow",    "xpc"};

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool hasBundleBit(const std::string& path) {
    std::array<unsigned char, 32> finderInfo{};
    const ssize_t size =
        ::getxattr(posix::systemPath(path), "user.com.apple.FinderInfo", finderInfo.data(), finderInfo.size());
    // The flags are the big-endian 16 bits at offset 8; the bundle bit is 0x2000.
    return size == static_cast<ssize_t>(finderInfo.size()) && (finderInfo[8] & 0x20U) != 0;
}

}  // namespace

bool hasPackageExtension(std::string_view name) {
    const auto dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) {
        return false;
    }
    std::string extension(name.substr(dot + 1));
    std::transform(extension.begin(), extension.end(), extension.begin(), lowered);
    return std::find(bundleExtensions.begin(), bundleExtensions.end(), extension) != bundleExtensions.end();
}

bool isPackage(const std::string& path) {
    struct stat status {};
    if (::stat(posix::systemPath(path), &status) != 0 || !S_ISDIR(status.st_mode)) {
        return false;
    }
    return hasPackageExtension(posix::splitPath(path).name) || hasBundleBit(path);
}

}  // namespace platform::linux_host
