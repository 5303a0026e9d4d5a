// Administrator rights through sudo, and through su for the name of another administrator.
#pragma once

#include <string>

#include "platform/linux/rights/SessionStarter.h"

namespace platform::rights {

// sudo is started for the present user and decides whether it wants a password; what it remembers of a moment ago, or
// never asks for, is granted without a question. An answer that names another administrator is checked by su, which
// then runs sudo as him; one that names root is checked by su alone. Where sudo cannot be used, root's password is
// asked for, whether he has one or not: nobody but su can tell.
//
// Three wrong passwords are the most that is taken. Without a prompt only what needs no password is granted.
class SudoStarter : public SessionStarter {
public:
    // The paths are there for tests. One that does not exist makes its way unavailable; so does a path of sudo that has
    // anything but letters, digits and "/._-" in it.
    explicit SudoStarter(std::string sudo = "/usr/bin/sudo", std::string su = "/usr/bin/su");

    StartResult start(const HelperImage& image, PasswordPrompt* prompt) override;

private:
    const std::string m_sudo;
    const std::string m_su;
};

}  // namespace platform::rights
