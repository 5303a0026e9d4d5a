#include "platform/linux/tools/archive/Interruption.h"

#include <signal.h>

#include <atomic>

namespace platform::linux_host {

namespace {

std::atomic<int> notedSignal{0};
static_assert(std::atomic<int>::is_always_lock_free, "set from a signal handler");

void note(int number) { notedSignal = number; }

}  // namespace

void noteInterruptions() {
    for (const int number : {SIGHUP, SIGINT, SIGTERM, SIGPIPE}) {
        struct sigaction action {};
        if (::sigaction(number, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) {
            action.sa_handler = note;
            action.sa_flags = SA_RESTART;
            (void)::sigaction(number, &action, nullptr);
        }
    }
}

void noteInterruption(int number) { note(number); }

void checkInterruption() {
    if (notedSignal.load(std::memory_order_relaxed) != 0) {
        throw Interrupted();
    }
}

void endByNotedSignal() {
    if (const int number = notedSignal; number != 0) {
        (void)::signal(number, SIG_DFL);
        (void)::raise(number);
    }
}

}  // namespace platform::linux_host
