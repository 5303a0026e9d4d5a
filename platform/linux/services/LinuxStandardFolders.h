// The standard folders of a Linux host, laid out like those of the platform:
//
//   kind                  user                          local                       system
//   applications          ~/Applications                /Applications
//   adminApplications     ~/Applications/Utilities      /Applications/Utilities
//   library               ~/Library                     /Library                    /System/Library
//   documentation         ~/Library/Documentation       /Library/Documentation
//   caches                ~/Library/Caches              /Library/Caches
//   applicationSupport    ~/Library/Application Support /Library/Application Support
//   documents, desktop, movies: the user's, where the desktop keeps them, else ~/Documents, ~/Desktop, ~/Movies
//
// The superuser's user domain lies below "/var/root", and the desktop's choice does not enter there.
#pragma once

#include "platform/ports/Identity.h"
#include "platform/ports/StandardFolders.h"

namespace platform::linux_host {

class LinuxStandardFolders : public StandardFolders {
public:
    explicit LinuxStandardFolders(Identity& identity) : m_identity(identity) {}

    std::vector<std::string> searchPaths(FolderKind kind, FolderDomain domain) override;
    // $TMPDIR when that is an absolute path, else "/tmp"; no "/" at the end.
    std::string temporaryFolder() override;
    // $XDG_CACHE_HOME when that is an absolute path, else ~/.cache.
    std::optional<std::string> userCacheFolder() override;

private:
    std::string userFolder(FolderKind kind);

    Identity& m_identity;
};

}  // namespace platform::linux_host
