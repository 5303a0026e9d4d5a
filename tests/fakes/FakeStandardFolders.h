#pragma once

#include <map>
#include <utility>

#include "platform/ports/StandardFolders.h"

namespace fakes {

class FakeStandardFolders : public platform::StandardFolders {
public:
    std::map<std::pair<platform::FolderKind, platform::FolderDomain>, std::vector<std::string>> paths;
    std::string temporary = "/tmp";
    std::optional<std::string> cache;

    std::vector<std::string> searchPaths(platform::FolderKind kind, platform::FolderDomain domain) override {
        const auto found = paths.find({kind, domain});
        return found == paths.end() ? std::vector<std::string>{} : found->second;
    }
    std::string temporaryFolder() override { return temporary; }
    std::optional<std::string> userCacheFolder() override { return cache; }
};

}  // namespace fakes
