#include "tools/wickfield-bundle/check/ModelCustomer.h"

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/ports/FolderLayout.h"
#include "tools/wickfield-bundle/check/Inventory.h"

namespace wickfield_bundle {

namespace {

using platform::FolderDomain;
using platform::FolderKind;

constexpr const char* home = "/Users/user";

class ModelIdentity : public platform::Identity {
public:
    unsigned realUserID() override { return 501; }  // the first that a Mac gives to a person
    std::string userName() override { return "user"; }
    std::string homeFolder() override { return home; }
    std::optional<std::string> homeFolderForUser(const std::string& name) override {
        return name == userName() ? std::optional<std::string>(home) : std::nullopt;
    }
    std::optional<std::string> consoleUser() override { return userName(); }
};

// As a Mac has them.
class ModelFolders : public platform::StandardFolders {
public:
    std::vector<std::string> searchPaths(FolderKind kind, FolderDomain domain) override {
        if (domain == FolderDomain::system) {
            return kind == FolderKind::library ? std::vector<std::string>{"/System/Library"}
                                               : std::vector<std::string>{};
        }
        const char* const path = pathInDomain(kind);
        const bool isPersonal =
            kind == FolderKind::documents || kind == FolderKind::desktop || kind == FolderKind::movies;
        if (path == nullptr || (isPersonal && domain == FolderDomain::local)) {
            return {};
        }
        return {std::string(domain == FolderDomain::user ? home : "") + path};
    }
    std::string temporaryFolder() override { return "/private/tmp"; }
    std::optional<std::string> userCacheFolder() override { return std::nullopt; }
};

}  // namespace

bool isInModelHome(std::string_view destination) { return destination == home || liesWithin(destination, home); }

platform::Host hostOfModelCustomer() {
    static ModelIdentity& identity = *new ModelIdentity;
    static ModelFolders& folders = *new ModelFolders;
    platform::Host host = platform::host();
    host.identity = &identity;
    host.folders = &folders;
    return host;
}

}  // namespace wickfield_bundle
