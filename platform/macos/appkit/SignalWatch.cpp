#include "platform/macos/appkit/SignalWatch.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

namespace platform::macos {

namespace {

constexpr std::array<int, 3> watched{SIGTERM, SIGINT, SIGHUP};

std::atomic<int> wakeDescriptor = -1;
static_assert(std::atomic<int>::is_always_lock_free, "used in a signal handler");

void wake(int) {
    const int saved = errno;
    const char byte = 0;
    static_cast<void>(!::write(wakeDescriptor, &byte, sizeof byte));
    errno = saved;
}

void tellOfEach(int descriptor, const std::function<void()>& asked) {
    for (;;) {
        char byte = 0;
        const auto count = ::read(descriptor, &byte, sizeof byte);
        if (count > 0) {
            asked();
        } else if (count == 0 || errno != EINTR) {
            return;
        }
    }
}

bool openPipe(std::array<int, 2>& ends) {
    if (::pipe(ends.data()) != 0) {  // NOLINT(android-cloexec-pipe) - there is no pipe2() here
        return false;
    }
    for (const int end : ends) {
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
    }
    ::fcntl(ends[1], F_SETFL, O_NONBLOCK);
    return true;
}

// Signals come to the other threads: this one would only be told of them by itself.
void startThread(int descriptor, std::function<void()> asked) {
    sigset_t all;
    sigset_t before;
    sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &before);
    try {
        std::thread([descriptor, asked = std::move(asked)] { tellOfEach(descriptor, asked); }).detach();
    } catch (const std::system_error&) {
        wakeDescriptor = -1;
    }
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void catchSignal(int number) {
    struct sigaction previous = {};
    if (::sigaction(number, nullptr, &previous) == 0 && previous.sa_handler != SIG_IGN) {
        struct sigaction action = {};
        action.sa_handler = wake;
        action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
        sigemptyset(&action.sa_mask);
        ::sigaction(number, &action, nullptr);
    }
}

}  // namespace

void watchSignals(std::function<void()> asked) {
    std::array<int, 2> ends{};
    if (!openPipe(ends)) {
        return;
    }
    wakeDescriptor = ends[1];
    startThread(ends[0], std::move(asked));
    if (wakeDescriptor >= 0) {
        for (const int number : watched) {
            catchSignal(number);
        }
    }
}

}  // namespace platform::macos
