#pragma once

#include "platform/posix/TerminateHandler.h"

namespace platform::macos {

// C++'s and Objective-C's. One that AppKit catches around an event on the main thread is none: it goes to the system
// console, and the application goes on.
class MacUncaughtExceptions : public UncaughtExceptions {
public:
    MacUncaughtExceptions();

    void setHandler(Handler handler) override;

private:
    posix::TerminateHandler m_ofCpp;
};

}  // namespace platform::macos
