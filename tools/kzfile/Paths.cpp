#include "tools/kzfile/Paths.h"

#include <filesystem>
#include <system_error>

#include "lib/base/PathText.h"

namespace kzfile {

namespace fs = std::filesystem;

std::string workingFolder() { return fs::current_path().string(); }

std::string absolutePath(const std::string& name) {
    return kz::appendPathComponent(name.starts_with('/') ? "/" : workingFolder(), name);
}

std::string shownPath(const std::string& path) {
    std::error_code error;
    const std::string folder = fs::current_path(error).string() + '/';
    const bool isBelow = !error && folder != "//" && path.starts_with(folder) && path.size() > folder.size();
    return isBelow ? path.substr(folder.size()) : path;
}

std::string resolvedPath(const std::string& name) {
    const std::string path = absolutePath(name);
    const std::string last = kz::lastPathComponent(path);
    std::error_code error;
    if (last == "." || last == ".." || last == "/") {
        const fs::path whole = fs::weakly_canonical(path, error);
        return error ? path : whole.string();
    }
    const fs::path folder = fs::weakly_canonical(kz::deletingLastPathComponent(path), error);
    return error ? path : kz::appendPathComponent(folder.string(), last);
}

ItemKind kindOf(const std::string& path) {
    std::error_code error;
    switch (fs::status(path, error).type()) {
        case fs::file_type::regular:
            return ItemKind::file;
        case fs::file_type::directory:
            return ItemKind::folder;
        case fs::file_type::not_found:
        case fs::file_type::none:
            return fs::is_symlink(fs::symlink_status(path, error)) ? ItemKind::danglingLink : ItemKind::missing;
        default:
            return ItemKind::other;
    }
}

std::string missingText(const std::string& name) {
    std::error_code error;
    static_cast<void>(fs::status(absolutePath(name), error));
    return name + ": " + (error ? error : std::make_error_code(std::errc::no_such_file_or_directory)).message();
}

}  // namespace kzfile
