// A path cut into the folder that holds the item and the item's name in it.
#pragma once

#include <string>

namespace platform::posix {

struct PathParts {
    std::string folder;  // "." for a bare name
    std::string name;    // empty for the root
};

inline std::string withoutTrailingSlashes(std::string path) {
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

inline PathParts splitPath(const std::string& path) {
    const std::string plain = withoutTrailingSlashes(path);
    const auto slash = plain.rfind('/');
    if (slash == std::string::npos) {
        return {".", plain};
    }
    return {slash == 0 ? "/" : withoutTrailingSlashes(plain.substr(0, slash)), plain.substr(slash + 1)};
}

// The text to hand to the system when a look at a path is all that is wanted. A NUL would end it early and make it name
// another item: such a path gives the empty one, at which nothing stands.
inline const char* systemPath(const std::string& path) {
    return path.find('\0') == std::string::npos ? path.c_str() : "";
}

inline std::string joinPath(const std::string& folder, const std::string& name) {
    return folder.ends_with('/') ? folder + name : folder + "/" + name;
}

}  // namespace platform::posix
