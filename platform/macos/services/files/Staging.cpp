#include "platform/macos/services/files/Staging.h"

#include <stdio.h>

#include <cerrno>

namespace platform::macos {

int renameWithoutReplacing(const std::string& from, const std::string& to) {
    return ::renamex_np(from.c_str(), to.c_str(), RENAME_EXCL) == 0 ? 0 : errno;
}

}  // namespace platform::macos
