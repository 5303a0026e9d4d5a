#include "platform/posix/FileErrors.h"

#include <cerrno>
#include <cstring>
#include <system_error>

namespace platform::posix {

namespace {

std::string quoted(const std::string& path) { return "“" + path + "”"; }

}  // namespace

std::string meaningOf(int code) {
#if defined(__GLIBC__)
    const char* text = ::strerrordesc_np(code);
    return text != nullptr ? text : "error " + std::to_string(code);
#else
    return std::generic_category().message(code);
#endif
}

Error fileError(std::string_view doing, const std::string& path, int code) {
    return {code, "Cannot " + std::string(doing) + " " + quoted(path) + ": " + meaningOf(code)};
}

Error fileError(std::string_view doing, const std::string& path, const std::string& destination, int code) {
    return {code, "Cannot " + std::string(doing) + " " + quoted(path) + " to " + quoted(destination) + ": " +
                      meaningOf(code)};
}

Failure refusedPath(std::string_view doing, const std::string& path) {
    if (path.empty()) {
        return fileError(doing, path, ENOENT);
    }
    if (path.find('\0') != std::string::npos) {
        return fileError(doing, path.substr(0, path.find('\0')), EINVAL);
    }
    return {};
}

}  // namespace platform::posix
