#include "platform/linux/services/LinuxStandardFolders.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "platform/linux/services/UserDirs.h"
#include "platform/ports/FolderLayout.h"

namespace platform::linux_host {

namespace {

// The name under which the desktop keeps the folder; nullptr when it does not.
const char* desktopName(FolderKind kind) {
    switch (kind) {
        case FolderKind::documents:
            return "XDG_DOCUMENTS_DIR";
        case FolderKind::desktop:
            return "XDG_DESKTOP_DIR";
        case FolderKind::movies:
            return "XDG_VIDEOS_DIR";
        default:
            return nullptr;
    }
}

std::optional<std::string> absolutePathFrom(const char* variable) {
    const char* path = std::getenv(variable);
    return path != nullptr && *path == '/' ? std::optional<std::string>(path) : std::nullopt;
}

// A home of "/" gives "/Library", not "//Library".
std::string joinedOnto(std::string folder, const char* relative) {
    while (folder.ends_with('/')) {
        folder.pop_back();
    }
    return folder + relative;
}

// Empty when the file cannot be read; no more than what such a file can reasonably hold.
std::string beginningOfFile(const std::string& path) {
    constexpr std::size_t limit = std::size_t{1} << 16U;
    std::ifstream file(path, std::ios::binary);
    std::string text(limit, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return text;
}

}  // namespace

std::vector<std::string> LinuxStandardFolders::searchPaths(FolderKind kind, FolderDomain domain) {
    const char* relative = pathInDomain(kind);
    if (relative == nullptr) {
        return {};
    }
    switch (domain) {
        case FolderDomain::user:
            return {userFolder(kind)};
        case FolderDomain::local:
            return desktopName(kind) == nullptr ? std::vector<std::string>{relative} : std::vector<std::string>{};
        case FolderDomain::system:
            return kind == FolderKind::library ? std::vector<std::string>{"/System/Library"}
                                               : std::vector<std::string>{};
    }
    return {};
}

std::string LinuxStandardFolders::userFolder(FolderKind kind) {
    if (m_identity.realUserID() == 0) {
        return joinedOnto("/var/root", pathInDomain(kind));
    }
    const std::string home = m_identity.homeFolder();
    if (const char* name = desktopName(kind)) {
        const auto settings = absolutePathFrom("XDG_CONFIG_HOME").value_or(joinedOnto(home, "/.config"));
        const auto folders = parseUserDirs(beginningOfFile(joinedOnto(settings, "/user-dirs.dirs")), home);
        if (const auto found = folders.find(name); found != folders.end()) {
            return found->second;
        }
    }
    return joinedOnto(home, pathInDomain(kind));
}

std::string LinuxStandardFolders::temporaryFolder() {
    auto path = absolutePathFrom("TMPDIR").value_or("/tmp");
    while (path.size() > 1 && path.ends_with('/')) {
        path.pop_back();
    }
    return path;
}

std::optional<std::string> LinuxStandardFolders::userCacheFolder() {
    const auto chosen = absolutePathFrom("XDG_CACHE_HOME");
    return chosen ? chosen : joinedOnto(m_identity.homeFolder(), "/.cache");
}

}  // namespace platform::linux_host
