#include "platform/linux/qt/SignalWatch.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>

namespace platform::qt {

namespace {

constexpr int watched[] = {SIGTERM, SIGINT, SIGHUP};

std::atomic<int> wakeDescriptor = -1;
static_assert(std::atomic<int>::is_always_lock_free, "used in a signal handler");

void wake(int) {
    const int saved = errno;
    const std::uint64_t one = 1;
    static_cast<void>(!::write(wakeDescriptor, &one, sizeof one));
    errno = saved;
}

}  // namespace

SignalWatch::SignalWatch(std::function<void()> asked) {
    wakeDescriptor = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (wakeDescriptor < 0) {
        return;  // the signals keep what they do by default
    }
    m_notifier = std::make_unique<QSocketNotifier>(wakeDescriptor.load(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [asked = std::move(asked)] {
        std::uint64_t count = 0;
        static_cast<void>(!::read(wakeDescriptor, &count, sizeof count));
        asked();
    });
    for (const int number : watched) {
        struct sigaction previous = {};
        if (::sigaction(number, nullptr, &previous) == 0 && previous.sa_handler != SIG_IGN) {
            struct sigaction action = {};
            action.sa_handler = wake;
            action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
            sigemptyset(&action.sa_mask);
            ::sigaction(number, &action, nullptr);
        }
    }
}

SignalWatch::~SignalWatch() {
    for (const int number : watched) {
        struct sigaction present = {};
        if (::sigaction(number, nullptr, &present) == 0 && present.sa_handler == wake) {
            ::signal(number, SIG_DFL);
        }
    }
    m_notifier.reset();
    if (const int descriptor = wakeDescriptor.exchange(-1); descriptor >= 0) {
        ::close(descriptor);
    }
}

}  // namespace platform::qt
