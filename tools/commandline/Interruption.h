// Ctrl-C, and the other signals that ask a program to end.
#pragma once

#include <functional>

namespace commandline {

// Before any other thread is started. From then on SIGINT, SIGTERM and SIGHUP, but for those that the program was
// started to ignore, end the program at once with 128 + their number, unless there is work to be tidied up.
void watchForInterruptions();

// While it exists an interruption ends nothing; whoever made it looks at isInterrupted() and leaves nothing half-made.
// One at a time.
class TidyWork {
public:
    // `onInterruption` is called on another thread, and not once this object is gone.
    explicit TidyWork(std::function<void()> onInterruption = {});
    ~TidyWork();
    TidyWork(const TidyWork&) = delete;
    TidyWork& operator=(const TidyWork&) = delete;
};

bool isInterrupted() noexcept;    // any thread
int interruptionCode() noexcept;  // 128 + the number of the signal

}  // namespace commandline
