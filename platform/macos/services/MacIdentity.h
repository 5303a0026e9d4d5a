#pragma once

#include "platform/ports/Identity.h"

namespace platform::macos {

class MacIdentity : public Identity {
public:
    unsigned realUserID() override;
    std::string userName() override;
    std::string homeFolder() override;
    std::optional<std::string> homeFolderForUser(const std::string& name) override;
    std::optional<std::string> consoleUser() override;
};

}  // namespace platform::macos
