#include "tools/commandline/Interruption.h"

#include <signal.h>

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace commandline {

namespace {

constexpr int codeOfSignal = 128;

std::atomic<int> caught = 0;  // the first signal

struct Tidying {
    std::mutex mutex;
    bool active = false;
    std::function<void()> onInterruption;
};

Tidying& tidying() {
    static Tidying& all = *new Tidying;
    return all;
}

void waitForSignals(sigset_t signals) {
    for (;;) {
        int number = 0;
        if (::sigwait(&signals, &number) != 0) {
            continue;
        }
        int none = 0;
        caught.compare_exchange_strong(none, number);
        const std::lock_guard lock(tidying().mutex);
        if (!tidying().active) {
            std::_Exit(interruptionCode());
        }
        if (tidying().onInterruption) {
            tidying().onInterruption();
        }
    }
}

}  // namespace

void watchForInterruptions() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction present {};
        if (::sigaction(number, nullptr, &present) == 0 && present.sa_handler != SIG_IGN) {
            sigaddset(&signals, number);
        }
    }
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    try {
        std::thread(waitForSignals, signals).detach();
    } catch (const std::system_error&) {
        ::pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);  // without a thread they end the program as ever
    }
}

TidyWork::TidyWork(std::function<void()> onInterruption) {
    const std::lock_guard lock(tidying().mutex);
    tidying().active = true;
    tidying().onInterruption = std::move(onInterruption);
}

TidyWork::~TidyWork() {
    const std::lock_guard lock(tidying().mutex);
    tidying().active = false;
    tidying().onInterruption = nullptr;
}

bool isInterrupted() noexcept { return caught != 0; }

int interruptionCode() noexcept { return codeOfSignal + caught; }

}  // namespace commandline
