#include "platform/linux/rights/PolkitStarter.h"

#include <unistd.h>

#include <utility>
#include <variant>

#include "platform/linux/rights/HelperLaunch.h"
#include "platform/linux/rights/PolkitAgent.h"

namespace platform::rights {

namespace {

bool isOver(HelperLaunch& launch) {
    // In this order: what has ended may have said that the helper runs just before.
    const bool hasExited = launch.exitCode().has_value();
    return launch.progress() != HelperLaunch::Progress::waiting || hasExited;
}

bool isDecidedAgainst(const PolkitAgent& agent) {
    return agent.outcome() != PolkitAgent::Outcome::open && agent.outcome() != PolkitAgent::Outcome::granted;
}

// Rights that were granted and a helper that does not start all the same: another way may do better.
StartStatus statusOf(PolkitAgent::Outcome outcome) {
    switch (outcome) {
        case PolkitAgent::Outcome::cancelled:
            return StartStatus::cancelled;
        case PolkitAgent::Outcome::refused:
            return StartStatus::refused;
        case PolkitAgent::Outcome::open:
        case PolkitAgent::Outcome::granted:
        case PolkitAgent::Outcome::unavailable:
            break;
    }
    return StartStatus::unavailable;
}

}  // namespace

PolkitStarter::PolkitStarter(std::string pkexec) : m_pkexec(std::move(pkexec)) {}

StartResult PolkitStarter::start(const HelperImage& image, PasswordPrompt* prompt) {
    if (::access(m_pkexec.c_str(), X_OK) != 0) {
        return {};
    }
    const auto agent = PolkitAgent::make(prompt);
    if (!agent) {
        return {};
    }
    // pkexec looks at the helper with this user's own rights, for which the descriptors of this process are closed, so
    // it inherits one. It refuses to work in an environment that it finds odd, and the helper needs none.
    auto started = HelperLaunch::start({m_pkexec, "--disable-internal-agent", "/proc/self/fd/3"},
                                       std::vector<std::string>{"LC_ALL=C"}, image.descriptor());
    auto* const launch = std::get_if<HelperLaunch>(&started);
    if (launch == nullptr) {
        return {};
    }
    agent->watch(launch->socket());
    agent->watch(launch->exitWatch());
    while (!isOver(*launch) && !isDecidedAgainst(*agent)) {
        agent->serve();
    }
    if (launch->progress() == HelperLaunch::Progress::running) {
        const bool isUnchecked = agent->outcome() != PolkitAgent::Outcome::granted;
        if (isUnchecked && prompt != nullptr && prompt->knownUser()) {
            return {};  // polkit wanted no password, but the one that was given is to be checked
        }
        return {.status = StartStatus::granted, .session = launch->takeSession()};
    }
    return {.status = statusOf(agent->outcome()), .session = nullptr};
}

}  // namespace platform::rights
