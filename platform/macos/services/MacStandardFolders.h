#pragma once

#include "platform/ports/StandardFolders.h"

namespace platform::macos {

class MacStandardFolders : public StandardFolders {
public:
    std::vector<std::string> searchPaths(FolderKind kind, FolderDomain domain) override;
    std::string temporaryFolder() override;  // with a "/" at its end, as the host has it
    std::optional<std::string> userCacheFolder() override;
};

}  // namespace platform::macos
