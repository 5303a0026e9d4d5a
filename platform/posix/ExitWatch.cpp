#include "platform/posix/ExitWatch.h"

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <thread>

#include "platform/posix/Poll.h"
#if defined(__linux__)
#include <sys/syscall.h>
#include <unistd.h>
#else
#include <sys/event.h>
#endif

namespace platform::posix {

Descriptor openExitWatch(pid_t child) {
#if defined(__linux__)
    return Descriptor(static_cast<int>(::syscall(SYS_pidfd_open, child, 0)));
#else
    Descriptor queue(::kqueue());
    struct kevent exit {};
    EV_SET(&exit, child, EVFILT_PROC, EV_ADD | EV_ONESHOT, NOTE_EXIT, 0, nullptr);
    if (queue && ::kevent(queue.get(), &exit, 1, nullptr, 0, nullptr) != 0) {
        queue.reset();
    }
    return queue;
#endif
}

ExitState exitState(pid_t child, Blocking blocking) {
    const int flags = WEXITED | WNOWAIT | (blocking == Blocking::no ? WNOHANG : 0);
    siginfo_t info{};
    int result = 0;
    do {
        result = ::waitid(P_PID, static_cast<id_t>(child), &info, flags);
    } while (result != 0 && errno == EINTR);
    ExitState state;
    if (result != 0) {
        state.ended = state.reapedElsewhere = true;
        state.status = -1;
    } else if (info.si_pid == child) {
        state.ended = true;
        state.bySignal = info.si_code != CLD_EXITED;
        // Darwin hands on all that the tool has given to exit, and only the first time.
        state.status = state.bySignal ? info.si_status : info.si_status & 0xff;
    }
    return state;
}

void waitForExit(pid_t child, const Descriptor& watch, std::chrono::milliseconds limit) {
    const auto deadline = deadlineAfter(limit);
    if (watch) {
        pollfd waited{watch.get(), POLLIN, 0};
        pollUntil({&waited, 1}, deadline);
        return;
    }
    std::chrono::microseconds interval{200};
    while (!exitState(child, Blocking::no).ended) {
        const auto left = deadline - std::chrono::steady_clock::now();
        if (left <= std::chrono::steady_clock::duration::zero()) {
            return;
        }
        std::this_thread::sleep_for(std::min<std::chrono::steady_clock::duration>(interval, left));
        interval = std::min(interval * 2, std::chrono::microseconds{5000});
    }
}

bool reap(pid_t child) {
    siginfo_t info{};
    int result = 0;
    do {
        result = ::waitid(P_PID, static_cast<id_t>(child), &info, WEXITED | WNOHANG);
    } while (result != 0 && errno == EINTR);
    return result != 0 || info.si_pid == child;
}

}  // namespace platform::posix
