// Administrator rights through polkit: pkexec asks, and this process is the agent that answers.
#pragma once

#include <string>

#include "platform/linux/rights/SessionStarter.h"

namespace platform::rights {

// Whatever pkexec finds wrong before anybody was asked makes this way unavailable, a rule that forbids it included.
class PolkitStarter : public SessionStarter {
public:
    explicit PolkitStarter(std::string pkexec = "/usr/bin/pkexec");

    StartResult start(const HelperImage& image, PasswordPrompt* prompt) override;

private:
    const std::string m_pkexec;
};

}  // namespace platform::rights
