#include "lib/KZLocalPaths.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <mutex>
#include <string_view>

#include "lib/base/PathText.h"
#include "lib/base/Text.h"
#include "platform/ports/Host.h"

namespace KZLocalPaths {

using platform::FolderDomain;
using platform::FolderKind;

namespace {

using OptionalPath = std::optional<std::string>;

bool isSuperuser() { return platform::host().identity->realUserID() == 0; }

OptionalPath joined(const OptionalPath& folder, std::string_view component) {
    return folder ? OptionalPath(kz::appendPathComponent(*folder, component)) : std::nullopt;
}

OptionalPath folder(FolderKind kind, UserDomain user) {
    return pathForDirectory(kind, user == UserDomain::yes ? FolderDomain::user : FolderDomain::local);
}

// In characters as the platform counts them: half of a surrogate pair stays behind as bytes that equal no name.
std::string withoutLastTwoCharacters(std::string path) {
    path.pop_back();  // the slash
    std::size_t bytes = 1;
    while (bytes < path.size() && (static_cast<unsigned char>(path[path.size() - bytes]) & 0xC0U) == 0x80U) {
        ++bytes;
    }
    const bool isPair = kz::lengthInUTF16(std::string_view(path).substr(path.size() - bytes)) == 2;
    path.resize(path.size() - (isPair || bytes > 4 ? 1 : bytes));
    return path;
}

std::vector<std::string> standardFolders() {
    using InBothDomains = OptionalPath (*)(UserDomain);
    static constexpr std::array<InBothDomains, 7> inBothDomains{
        applicationDirectory, adminApplicationDirectory, documentDirectory, libraryDirectory, prefsDirectory,
        cacheDirectory,       appSupportDirectory};
    using InOneDomain = OptionalPath (*)();
    static constexpr std::array<InOneDomain, 4> inOneDomain{desktopDirectory, userDirectory, systemLibraryDirectory,
                                                            localDocumentationDirectory};
    std::vector<std::string> folders;
    const auto take = [&](OptionalPath path) {
        if (path) {
            folders.push_back(*std::move(path));
        }
    };
    for (const auto of : inBothDomains) {
        take(of(UserDomain::yes));
        take(of(UserDomain::no));
    }
    for (const auto of : inOneDomain) {
        take(of());
    }
    return folders;
}

bool isSystemFolder(std::string_view path) {
    static constexpr std::array<std::string_view, 6> names{"/Users/Shared", "/usr", "/var", "/bin", "/sbin", "/System"};
    return std::ranges::find(names, path) != names.end();
}

bool isInSystemFolder(std::string_view path) {
    static constexpr std::array<std::string_view, 5> beginnings{"/var/", "/bin/", "/sbin/", "/private/var/",
                                                                "/System/"};
    return (path.starts_with("/usr/") && !path.starts_with("/usr/local/")) ||
           std::ranges::any_of(beginnings, [&](std::string_view beginning) { return path.starts_with(beginning); });
}

}  // namespace

OptionalPath pathForDirectory(FolderKind kind, FolderDomain domain) {
    constexpr std::size_t rootHomeLength = 9;          // "/var/root"
    constexpr std::size_t privateRootHomeLength = 16;  // "/private/var/roo"

    auto paths = platform::host().folders->searchPaths(kind, domain);
    if (paths.empty()) {
        return std::nullopt;
    }
    std::string& path = paths.front();
    if (domain != FolderDomain::user || !isSuperuser()) {
        return std::move(path);
    }
    if (path.starts_with("/var/root")) {
        path.erase(0, rootHomeLength);
    }
    if (path.starts_with("/private/var/root")) {
        path.erase(0, privateRootHomeLength);
    }
    return joined(userDirectory(), path);
}

OptionalPath applicationDirectory(UserDomain user) { return folder(FolderKind::applications, user); }
OptionalPath adminApplicationDirectory(UserDomain user) { return folder(FolderKind::adminApplications, user); }
OptionalPath documentDirectory(UserDomain user) { return folder(FolderKind::documents, user); }
OptionalPath libraryDirectory(UserDomain user) { return folder(FolderKind::library, user); }
OptionalPath prefsDirectory(UserDomain user) { return joined(libraryDirectory(user), "Preferences"); }
OptionalPath cacheDirectory(UserDomain user) { return folder(FolderKind::caches, user); }
OptionalPath appSupportDirectory(UserDomain user) { return folder(FolderKind::applicationSupport, user); }
OptionalPath movieDirectory() { return folder(FolderKind::movies, UserDomain::yes); }
OptionalPath desktopDirectory() { return folder(FolderKind::desktop, UserDomain::yes); }
OptionalPath systemLibraryDirectory() { return pathForDirectory(FolderKind::library, FolderDomain::system); }
OptionalPath localDocumentationDirectory() { return folder(FolderKind::documentation, UserDomain::no); }
OptionalPath trashDirectory() { return joined(userDirectory(), ".Trash"); }
OptionalPath logDirectory(UserDomain user) { return joined(libraryDirectory(user), "Logs"); }
OptionalPath darwinCacheDirectory() { return platform::host().folders->userCacheFolder(); }

OptionalPath userDirectory() {
    platform::Identity& identity = *platform::host().identity;
    if (!isSuperuser()) {
        return identity.homeFolder();
    }
    const auto user = currentConsoleUser();
    return user ? identity.homeFolderForUser(*user) : std::nullopt;
}

OptionalPath username() {
    return isSuperuser() ? currentConsoleUser() : OptionalPath(platform::host().identity->userName());
}

OptionalPath currentConsoleUser() {
    auto user = platform::host().identity->consoleUser();
    return user == "loginwindow" ? std::nullopt : std::move(user);
}

std::string tempDirectory() { return platform::host().folders->temporaryFolder(); }

std::string tempFile() {
    constexpr long randomLength = 8;
    return kz::appendPathComponent(tempDirectory(), uuid() + randomString(randomLength));
}

std::string uuid() { return platform::host().system->globallyUniqueString(); }

bool isPathSystemDirectory(const std::string& path) { return isPathSystemDirectory(path, ExactMatch::no); }

bool isPathSystemDirectory(const std::string& path, ExactMatch exactMatch) {
    return SystemDirectoryGuard().protects(path, exactMatch);
}

SystemDirectoryGuard::SystemDirectoryGuard() : m_standardFolders(standardFolders()) {}

bool SystemDirectoryGuard::protects(const std::string& path, ExactMatch exactMatch) const {
    constexpr std::size_t shortestProtected = 3;
    if (path == "/") {
        return true;
    }
    if (kz::lengthInUTF16(path) < shortestProtected) {
        return false;
    }
    const std::string compared = path.ends_with('/') ? withoutLastTwoCharacters(path) : path;
    if (std::ranges::find(m_standardFolders, compared) != m_standardFolders.end() || isSystemFolder(compared)) {
        return true;
    }
    return exactMatch == ExactMatch::no && isInSystemFolder(compared);
}

bool isPathOnTimeMachineVolume(const std::string& path) {
    if (!path.starts_with("/Volumes/")) {
        return false;
    }
    const auto components = kz::pathComponents(path);
    return std::ranges::find(components, "Backups.backupdb") != components.end();
}

OptionalPath ensureTrailingSlash(const OptionalPath& path) {
    return path && !path->empty() && !path->ends_with('/') ? *path + "/" : path;
}

OptionalPath stripTrailingSlash(const OptionalPath& path) {
    return path && path->size() >= 2 && path->ends_with('/') ? path->substr(0, path->size() - 1) : path;
}

std::string randomString(long length) {
    static constexpr std::string_view characters = "abcdefghijklmnopqrstuvwxyz0123456789";
    static std::mutex generator;

    const std::lock_guard lock(generator);
    std::srand(static_cast<unsigned>(std::clock()) * static_cast<unsigned>(std::time(nullptr)));
    std::string text;
    for (long position = 0; position < length; ++position) {
        text += characters[static_cast<std::size_t>(std::rand()) % characters.size()];
    }
    return text;
}

}  // namespace KZLocalPaths
