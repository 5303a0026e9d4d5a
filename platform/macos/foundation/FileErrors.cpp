#include "platform/macos/foundation/FileErrors.h"

#include <cerrno>
#include <system_error>

namespace platform::macos {

namespace {

std::string quoted(const std::string& path) { return "“" + path + "”"; }

std::string meaning(int code) { return std::generic_category().message(code); }

}  // namespace

Error fileError(std::string_view doing, const std::string& path, int code) {
    return {code, "Cannot " + std::string(doing) + " " + quoted(path) + ": " + meaning(code)};
}

Error fileError(std::string_view doing, const std::string& path, const std::string& destination, int code) {
    return {code,
            "Cannot " + std::string(doing) + " " + quoted(path) + " to " + quoted(destination) + ": " + meaning(code)};
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

}  // namespace platform::macos
