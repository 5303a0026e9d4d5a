#include "platform/linux/services/LinuxSystemInfo.h"

#include <sys/random.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <fstream>

namespace platform::linux_host {

namespace {

std::string randomUUID() {
    static constexpr const char* digits = "0123456789ABCDEF";
    std::array<unsigned char, 16> bytes{};
    while (::getrandom(bytes.data(), bytes.size(), 0) < 0 && errno == EINTR) {
    }
    bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0FU) | 0x40U);  // version 4
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3FU) | 0x80U);  // variant 1

    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) {
            text += '-';
        }
        text += digits[bytes.at(i) >> 4U];
        text += digits[bytes.at(i) & 0x0FU];
    }
    return text;
}

// The value without the quotes and backslashes of a shell assignment.
std::string plain(std::string value) {
    if (value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front()) {
        value = value.substr(1, value.size() - 2);
    }
    std::erase(value, '\\');
    return value;
}

}  // namespace

std::optional<std::string> LinuxSystemInfo::environmentVariable(const std::string& name) {
    const char* value = std::getenv(name.c_str());
    return value == nullptr ? std::nullopt : std::optional<std::string>(value);
}

std::string LinuxSystemInfo::globallyUniqueString() {
    static std::atomic<std::uint64_t> count = 0;
    return randomUUID() + "-" + std::to_string(::getpid()) + "-" + std::to_string(++count);
}

std::string LinuxSystemInfo::operatingSystemVersion() {
    constexpr std::string_view key = "PRETTY_NAME=";
    for (const char* path : {"/etc/os-release", "/usr/lib/os-release"}) {
        std::ifstream file(path);
        for (std::string line; std::getline(file, line);) {
            if (line.starts_with(key) && line.size() > key.size()) {
                return plain(line.substr(key.size()));
            }
        }
    }
    utsname names{};
    return ::uname(&names) == 0 ? std::string("Linux ") + static_cast<const char*>(names.release) : "Linux";
}

long LinuxSystemInfo::processorCount() { return std::max(1L, ::sysconf(_SC_NPROCESSORS_ONLN)); }

std::uint64_t LinuxSystemInfo::physicalMemory() {
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long size = ::sysconf(_SC_PAGESIZE);
    return pages > 0 && size > 0 ? static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(size) : 0;
}

}  // namespace platform::linux_host
