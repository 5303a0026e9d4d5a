#include "platform/macos/services/files/Staging.h"

#include <stdio.h>
#include <stdlib.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>

namespace platform::macos {

std::string folderOf(const std::string& path) {
    const auto last = path.find_last_not_of('/');
    const auto slash = last == std::string::npos ? 0 : path.rfind('/', last);
    if (slash == std::string::npos) {
        return ".";
    }
    const auto end = path.find_last_not_of('/', slash);
    return end == std::string::npos ? "/" : path.substr(0, end + 1);
}

std::string stagedSibling(const std::string& path) {
    const std::uint64_t number = std::uint64_t{::arc4random()} << 32U | ::arc4random();
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "/.wickfield-%016llx", static_cast<unsigned long long>(number));
    return folderOf(path) + name.data();
}

int renameWithoutReplacing(const std::string& from, const std::string& to) {
    return ::renamex_np(from.c_str(), to.c_str(), RENAME_EXCL) == 0 ? 0 : errno;
}

}  // namespace platform::macos
