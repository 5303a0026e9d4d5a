// Work for the threads of the system.
#pragma once

#include "platform/ports/BackgroundQueue.h"

namespace platform::macos {

// Grand Central Dispatch's global queue of default priority.
class GlobalQueue : public BackgroundQueue {
public:
    void perform(std::function<void()> work) override;
};

}  // namespace platform::macos
