// The main thread and its event loop. Nothing throws.
#pragma once

#include <chrono>
#include <functional>

namespace platform {

class MainThread {
public:
    virtual ~MainThread() = default;

    virtual bool isCurrent() = 0;

    // Runs the work on the main thread and returns when it is done; at once when called there. Work runs in the order
    // in which it was handed over, also while a sheet, an alert panel or a nested loop is up.
    virtual void performAndWait(const std::function<void()>& work) = 0;

    // The same without waiting; on the main thread too it runs later, from the event loop.
    virtual void perform(std::function<void()> work) = 0;

    // Main thread only: waits up to `slice` for one event of any kind, or work handed over, and dispatches it.
    virtual void runNextEvent(std::chrono::milliseconds slice) = 0;
};

}  // namespace platform
