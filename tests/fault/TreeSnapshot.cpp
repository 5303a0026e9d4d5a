#include "tests/fault/TreeSnapshot.h"

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <vector>

namespace fault {

namespace {

std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string attribute(const std::string& path) {
    std::array<char, 256> value{};
    const ssize_t size = ::lgetxattr(path.c_str(), "user.mark", value.data(), value.size());
    return size < 0 ? "-" : std::string(value.data(), static_cast<std::size_t>(size));
}

void describe(const std::string& path, const std::string& name, std::string& text) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        return;
    }
    std::ostringstream line;
    line << name << ' ' << status.st_mode << ' ' << status.st_mtim.tv_sec << '.' << status.st_mtim.tv_nsec << ' '
         << attribute(path) << ' ';
    text += line.str();
    if (S_ISLNK(status.st_mode)) {
        text += std::filesystem::read_symlink(path).string();
    } else if (S_ISREG(status.st_mode)) {
        text += std::to_string(std::hash<std::string>{}(contents(path)));
    }
    text += "\n";
    if (!S_ISDIR(status.st_mode)) {
        return;
    }
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    for (const std::string& entry : names) {
        const std::string below = "/" + entry;
        describe(path + below, name + below, text);
    }
}

}  // namespace

std::string snapshot(const std::string& path) {
    std::string text;
    describe(path, {}, text);
    return text;
}

}  // namespace fault
