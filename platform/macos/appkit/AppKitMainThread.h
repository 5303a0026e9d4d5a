// The main thread whose event loop is AppKit's.
#pragma once

#include "platform/posix/MainQueue.h"

@class WickfieldMainReceiver;

namespace platform::macos {

// Work that is handed over is done by whatever loop runs: the application's, a modal panel's, a menu's, runNextEvent's.
// Made on the main thread once the application object is there; outlives every thread that uses it.
class AppKitMainThread : public posix::MainQueue {
public:
    AppKitMainThread();
    ~AppKitMainThread() override;

    void runNextEvent(std::chrono::milliseconds slice) override;

private:
    explicit AppKitMainThread(WickfieldMainReceiver* receiver);

    WickfieldMainReceiver* m_receiver;
};

}  // namespace platform::macos
