// Administrator rights through sudo, and through su for the name of another administrator.
#pragma once

#include <string>

#include "platform/linux/rights/SessionStarter.h"

namespace platform::rights {

class SudoStarter : public SessionStarter {
public:
    // The paths are there for tests. One that does not exist makes its way unavailable.
    explicit SudoStarter(std::string sudo = "/usr/bin/sudo", std::string su = "/usr/bin/su");

    StartResult start(const HelperImage& image, PasswordPrompt* prompt) override;

private:
    const std::string m_sudo;
    const std::string m_su;
};

}  // namespace platform::rights
