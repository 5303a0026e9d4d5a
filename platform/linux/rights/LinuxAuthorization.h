// Administrator rights on Linux: one helper process for each authorization that has been granted.
#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "platform/linux/rights/HelperImage.h"
#include "platform/linux/rights/SessionStarter.h"
#include "platform/ports/Authorization.h"
#include "platform/ports/MainThread.h"

namespace platform::rights {

// The statuses are errno's: ECANCELED (by the user), EACCES (refused), ENOTSUP (no way to ask for rights, or an unknown
// right), EPERM (no rights yet, or a command that is unsafe), EPIPE (the helper is gone; these rights never come back,
// others can be asked for), EAGAIN or ENOMEM (no thread or no memory to ask with), else what starting the tool gave.
//
// Any thread. Rights are asked for by one thread at a time. Asked for on the main thread, events are served meanwhile.
// From the first question on, the process cannot be traced and leaves no core file: it is about to hold a password, and
// then a way to root.
class LinuxAuthorization : public Authorization {
public:
    // Both outlive this object. Without a prompt only rights that need no password, or come with one, are granted.
    LinuxAuthorization(MainThread& mainThread, PasswordPrompt* prompt);
    // The ways to rights, in the order in which they are tried.
    LinuxAuthorization(MainThread& mainThread, PasswordPrompt* prompt,
                       std::vector<std::unique_ptr<SessionStarter>> starters);

    int create(const std::optional<Credentials>& credentials, std::unique_ptr<AuthorizationRef>& made) override;
    int copyRights(AuthorizationRef& ref, const std::string& right, const std::optional<Credentials>& credentials,
                   Interaction interaction) override;
    int execute(AuthorizationRef& ref, const std::string& tool, const std::vector<std::string>& arguments,
                bool drain) override;
    // For a process that has root's rights by its effective user only.
    std::unique_ptr<AuthorizationRef> copyPrivilegedReference() override;

private:
    StartResult askFor(const std::optional<Credentials>& credentials, Interaction interaction);
    StartResult startSession(PasswordPrompt* prompt);
    StartResult tryEach(PasswordPrompt* prompt);

    MainThread& m_mainThread;
    PasswordPrompt* const m_prompt;
    const std::vector<std::unique_ptr<SessionStarter>> m_starters;
    std::mutex m_asking;
};

}  // namespace platform::rights
