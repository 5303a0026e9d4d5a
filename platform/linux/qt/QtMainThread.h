// The main thread whose event loop is Qt's.
#pragma once

#include "platform/posix/MainQueue.h"

namespace platform::qt {

// Work that is handed over is done by whatever loop runs: the application's, a panel's, a menu's, runNextEvent's.
// Made on the thread of the application object, which must be there before; outlives every thread that uses it.
class QtMainThread : public posix::MainQueue {
public:
    QtMainThread();
    ~QtMainThread() override;

    void runNextEvent(std::chrono::milliseconds slice) override;

private:
    class Receiver;
    explicit QtMainThread(Receiver* receiver);

    Receiver* m_receiver;
};

}  // namespace platform::qt
