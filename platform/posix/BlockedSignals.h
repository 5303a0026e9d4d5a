#pragma once

#include <pthread.h>
#include <signal.h>

namespace platform::posix {

// While it lives, no signal comes to this thread; a thread that is started meanwhile inherits that. The signals of the
// program are for its own threads.
class BlockedSignals {
public:
    BlockedSignals() {
        sigset_t all;
        sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &m_previous);
    }
    ~BlockedSignals() { ::pthread_sigmask(SIG_SETMASK, &m_previous, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t m_previous{};
};

}  // namespace platform::posix
