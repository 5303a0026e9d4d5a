// A path cut into the folder that holds the item and the item's name in it.
#pragma once

#include <string>

namespace platform::linux_host {

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

inline std::string joinPath(const std::string& folder, const std::string& name) {
    return folder.ends_with('/') ? folder + name : folder + "/" + name;
}

}  // namespace platform::linux_host
