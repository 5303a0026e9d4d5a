// Where the host keeps the standard folders. Any thread; nothing throws; nothing is created.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace platform {

// The numbers are the platform's own search-path constants.
enum class FolderKind {
    applications = 1,
    adminApplications = 4,
    library = 5,
    documentation = 8,
    documents = 9,
    desktop = 12,
    caches = 13,
    applicationSupport = 14,
    movies = 17,
};

enum class FolderDomain { user = 1, local = 2, system = 8 };

class StandardFolders {
public:
    virtual ~StandardFolders() = default;

    // Empty when the host has no such folder in that domain. For the superuser's user domain the paths lie below
    // "/var/root" on every host.
    virtual std::vector<std::string> searchPaths(FolderKind kind, FolderDomain domain) = 0;

    virtual std::string temporaryFolder() = 0;
    virtual std::optional<std::string> userCacheFolder() = 0;  // the operating system's own, per user
};

}  // namespace platform
