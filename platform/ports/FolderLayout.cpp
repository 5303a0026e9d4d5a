#include "platform/ports/FolderLayout.h"

namespace platform {

const char* pathInDomain(FolderKind kind) {
    switch (kind) {
        case FolderKind::applications:
            return "/Applications";
        case FolderKind::adminApplications:
            return "/Applications/Utilities";
        case FolderKind::library:
            return "/Library";
        case FolderKind::documentation:
            return "/Library/Documentation";
        case FolderKind::documents:
            return "/Documents";
        case FolderKind::desktop:
            return "/Desktop";
        case FolderKind::caches:
            return "/Library/Caches";
        case FolderKind::applicationSupport:
            return "/Library/Application Support";
        case FolderKind::movies:
            return "/Movies";
    }
    return nullptr;
}

}  // namespace platform
