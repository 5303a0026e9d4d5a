// Answers with a name and a password that are known already, without anybody being asked.
#pragma once

#include <optional>
#include <string>

#include "platform/linux/rights/PasswordPrompt.h"
#include "platform/ports/Authorization.h"

namespace platform::rights {

// Every question but the first for a password is cancelled: the answer was wrong, or is not what was asked for.
class CredentialsPrompt : public PasswordPrompt {
public:
    explicit CredentialsPrompt(const Credentials& credentials)
        : m_user(credentials.user), m_password(credentials.password) {}

    // Answered before it returns.
    void ask(PasswordRequest request, Answered answered) override;
    void close() override {}
    std::optional<std::string> knownUser() const override { return m_user; }

private:
    const std::string m_user;
    Secret m_password;
    bool m_answered = false;
};

}  // namespace platform::rights
