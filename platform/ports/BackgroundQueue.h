// Work for other threads.
#pragma once

#include <functional>

namespace platform {

class BackgroundQueue {
public:
    virtual ~BackgroundQueue() = default;

    // Hands the work over and returns at once. It runs on some thread of the host's, never on the caller's, several
    // pieces at a time and in no promised order. It must not throw. What has not begun when the process ends is
    // dropped. Any thread.
    virtual void perform(std::function<void()> work) = 0;
};

}  // namespace platform
