#include "platform/posix/Poll.h"

#include <algorithm>
#include <cerrno>
#include <limits>

namespace platform::posix {

using Clock = std::chrono::steady_clock;

int pollUntil(std::span<pollfd> descriptors, Clock::time_point deadline) {
    using std::chrono::milliseconds;
    for (;;) {
        const milliseconds left = std::chrono::ceil<milliseconds>(deadline - Clock::now());
        const auto wait = std::clamp<milliseconds::rep>(left.count(), 0, std::numeric_limits<int>::max());
        const int ready = ::poll(descriptors.data(), static_cast<nfds_t>(descriptors.size()), static_cast<int>(wait));
        if (ready > 0 || (ready < 0 && errno != EINTR)) {
            return ready;
        }
        if (Clock::now() >= deadline) {
            return 0;
        }
    }
}

Clock::time_point deadlineAfter(std::chrono::milliseconds limit) {
    const auto now = Clock::now();
    const auto most = std::chrono::floor<std::chrono::milliseconds>(Clock::time_point::max() - now);
    return limit >= most ? Clock::time_point::max() : now + limit;
}

}  // namespace platform::posix
