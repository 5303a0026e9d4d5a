// Signals that ask the process to end, turned into a call from the event loop.
#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

namespace platform::qt {

// SIGTERM, SIGINT and SIGHUP; one that was ignored when the program started stays ignored. The second of a kind ends
// the process at once, should the first have found it hanging. One object per process.
class SignalWatch {
public:
    explicit SignalWatch(std::function<void()> asked);
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
};

}  // namespace platform::qt
