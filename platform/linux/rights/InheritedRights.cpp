#include "platform/linux/rights/InheritedRights.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <variant>

#include "platform/linux/rights/HelperImage.h"
#include "platform/linux/rights/HelperLaunch.h"
#include "platform/posix/Poll.h"

namespace platform::rights {

std::unique_ptr<RightsSession> inheritedRights() {
    if (::geteuid() != 0 || ::getuid() == 0) {
        return nullptr;
    }
    constexpr std::chrono::seconds limit{5};
    const HelperImage image;
    if (image.error() != 0) {
        return nullptr;
    }
    auto started = HelperLaunch::start({image.path()});
    auto* launch = std::get_if<HelperLaunch>(&started);
    if (launch == nullptr) {
        return nullptr;
    }
    std::array<pollfd, 1> watched{{{launch->socket(), POLLIN, 0}}};
    posix::pollUntil(watched, posix::deadlineAfter(limit));
    return launch->progress() == HelperLaunch::Progress::running ? launch->takeSession() : nullptr;
}

}  // namespace platform::rights
