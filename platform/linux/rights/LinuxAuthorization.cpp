#include "platform/linux/rights/LinuxAuthorization.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <exception>
#include <future>
#include <system_error>
#include <utility>

#include "platform/linux/rights/CredentialsPrompt.h"
#include "platform/linux/rights/InheritedRights.h"
#include "platform/linux/rights/PolkitStarter.h"
#include "platform/linux/rights/SudoStarter.h"

namespace platform::rights {

namespace {

constexpr const char* administratorRight = "system.privilege.admin";
constexpr std::chrono::milliseconds slice{10};

struct LinuxAuthorizationRef : AuthorizationRef {
    std::unique_ptr<RightsSession> session;  // none: no rights yet
};

std::vector<std::unique_ptr<SessionStarter>> waysOfThisMachine() {
    std::vector<std::unique_ptr<SessionStarter>> ways;
    ways.push_back(std::make_unique<PolkitStarter>());
    ways.push_back(std::make_unique<SudoStarter>());
    return ways;
}

void keepOthersOut() {
    constexpr rlimit none{0, 0};
    ::setrlimit(RLIMIT_CORE, &none);
    ::prctl(PR_SET_DUMPABLE, 0);
}

int statusOf(StartStatus status) {
    switch (status) {
        case StartStatus::granted:
            return 0;
        case StartStatus::cancelled:
            return ECANCELED;
        case StartStatus::refused:
            return EACCES;
        case StartStatus::unavailable:
            break;
    }
    return ENOTSUP;
}

}  // namespace

LinuxAuthorization::LinuxAuthorization(MainThread& mainThread, PasswordPrompt* prompt)
    : LinuxAuthorization(mainThread, prompt, waysOfThisMachine()) {}

LinuxAuthorization::LinuxAuthorization(MainThread& mainThread, PasswordPrompt* prompt,
                                       std::vector<std::unique_ptr<SessionStarter>> starters)
    : m_mainThread(mainThread), m_prompt(prompt), m_starters(std::move(starters)) {}

int LinuxAuthorization::create(const std::optional<Credentials>& /*credentials*/,
                               std::unique_ptr<AuthorizationRef>& made) {
    made = std::make_unique<LinuxAuthorizationRef>();
    return 0;
}

int LinuxAuthorization::copyRights(AuthorizationRef& ref, const std::string& right,
                                   const std::optional<Credentials>& credentials, Interaction interaction) {
    auto& session = static_cast<LinuxAuthorizationRef&>(ref).session;
    if (session) {
        return 0;
    }
    if (right != administratorRight) {
        return ENOTSUP;
    }
    try {
        auto result = askFor(credentials, interaction);
        session = std::move(result.session);
        return statusOf(result.status);
    } catch (const std::system_error& error) {
        return error.code().value();
    } catch (const std::exception&) {
        return ENOMEM;
    }
}

int LinuxAuthorization::execute(AuthorizationRef& ref, const std::string& tool,
                                const std::vector<std::string>& arguments, bool drain) {
    auto& session = static_cast<LinuxAuthorizationRef&>(ref).session;
    return session ? session->run(tool, arguments, drain) : EPERM;
}

std::unique_ptr<AuthorizationRef> LinuxAuthorization::copyPrivilegedReference() {
    auto session = inheritedRights();
    if (!session) {
        return nullptr;
    }
    keepOthersOut();
    auto ref = std::make_unique<LinuxAuthorizationRef>();
    ref->session = std::move(session);
    return ref;
}

StartResult LinuxAuthorization::askFor(const std::optional<Credentials>& credentials, Interaction interaction) {
    if (!credentials) {
        return startSession(interaction == Interaction::allowed ? m_prompt : nullptr);
    }
    CredentialsPrompt known(*credentials);
    StartResult result = startSession(&known);
    // Nobody was asked, so nobody cancelled: what was given was not good enough.
    if (result.status == StartStatus::cancelled) {
        result.status = StartStatus::refused;
    }
    return result;
}

// The main thread cannot wait: it is the one that shows the question.
StartResult LinuxAuthorization::startSession(PasswordPrompt* prompt) {
    if (!m_mainThread.isCurrent()) {
        return tryEach(prompt);
    }
    auto starting = std::async(std::launch::async, [&] { return tryEach(prompt); });
    while (starting.wait_for(std::chrono::seconds{0}) != std::future_status::ready) {
        m_mainThread.runNextEvent(slice);
    }
    return starting.get();
}

StartResult LinuxAuthorization::tryEach(PasswordPrompt* prompt) {
    const std::lock_guard lock(m_asking);
    keepOthersOut();
    const HelperImage image;
    if (image.error() != 0) {
        return {};
    }
    for (const auto& starter : m_starters) {
        StartResult result = starter->start(image, prompt);
        if (result.status != StartStatus::unavailable) {
            return result;
        }
    }
    return {};
}

}  // namespace platform::rights
