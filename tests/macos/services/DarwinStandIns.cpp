// Darwin's calls by those of Linux, as far as the services' own work on top of them is to be run there.
#include <copyfile.h>
#include <fcntl.h>
#include <removefile.h>
#include <stdlib.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "platform/macos/services/ConsoleUser.h"

namespace {

int result(const std::error_code& error) {
    errno = error.value();
    return error ? -1 : 0;
}

}  // namespace

extern "C" {

int lchflags(const char* /*path*/, uint32_t /*flags*/) { return 0; }

int renamex_np(const char* from, const char* to, unsigned /*flags*/) {
    return ::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE);
}

int copyfile(const char* from, const char* to, copyfile_state_t /*state*/, copyfile_flags_t /*flags*/) {
    std::error_code error;
    std::filesystem::copy(
        from, to, std::filesystem::copy_options::recursive | std::filesystem::copy_options::copy_symlinks, error);
    return result(error);
}

int removefile(const char* path, removefile_state_t /*state*/, removefile_flags_t /*flags*/) {
    std::error_code error;
    std::filesystem::remove_all(path, error);
    return result(error);
}

}  // extern "C"

namespace platform::macos {

std::optional<std::string> consoleUser() { return std::nullopt; }

}  // namespace platform::macos
