// Users from the account database and the environment, the console user from the login manager.
#pragma once

#include "platform/ports/Identity.h"

namespace platform::linux_host {

class LinuxIdentity : public Identity {
public:
    unsigned realUserID() override;
    // The number of the account as text when the database does not know it.
    std::string userName() override;
    // An ordinary user's is $HOME where that is an absolute path, and his account's otherwise; the superuser's is his
    // account's. "/" when neither says anything.
    std::string homeFolder() override;
    std::optional<std::string> homeFolderForUser(const std::string& name) override;
    std::optional<std::string> consoleUser() override;
};

}  // namespace platform::linux_host
