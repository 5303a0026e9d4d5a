#include "platform/posix/Reaper.h"

#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/posix/BlockedSignals.h"
#include "platform/posix/ExitWatch.h"
#include "platform/posix/Poll.h"

namespace platform::posix {

namespace {

// How often a child is looked at that has no watch.
constexpr std::chrono::milliseconds pollingInterval{100};

}  // namespace

Reaper& Reaper::shared() {
    static auto* const reaper = new Reaper;
    return *reaper;
}

void Reaper::adopt(pid_t child, Descriptor exitWatch) {
    if (reap(child)) {
        return;
    }
    if (!exitWatch) {
        exitWatch = openExitWatch(child);
    }
    const std::lock_guard lock(m_mutex);
    m_newcomers.push_back({child, std::move(exitWatch)});
    if (m_running) {
        if (m_wake) {
            const char byte = 0;
            // A full pipe wakes the thread as well.
            [[maybe_unused]] const auto written = ::write(m_wake.get(), &byte, 1);
        }
        return;
    }
    if (auto pipe = makePipe()) {
        m_woken = std::move(pipe->readEnd);
        m_wake = std::move(pipe->writeEnd);
    }
    const BlockedSignals blocked;
    try {
        m_running = true;
        std::thread([this] { run(); }).detach();
    } catch (const std::system_error&) {
        m_running = false;  // no thread to be had: the next child brings another try
    }
}

bool Reaper::takeNewcomers(std::vector<Child>& children) {
    const std::lock_guard lock(m_mutex);
    for (auto& child : m_newcomers) {
        children.push_back(std::move(child));
    }
    m_newcomers.clear();
    if (children.empty()) {
        m_running = false;
        m_wake.reset();
        m_woken.reset();
    }
    return m_running;
}

void Reaper::run() {
    std::vector<Child> children;
    std::vector<pollfd> waited;
    while (takeNewcomers(children)) {
        waited.clear();
        waited.push_back({m_woken.get(), POLLIN, 0});
        bool watched = static_cast<bool>(m_woken);
        for (const auto& child : children) {
            waited.push_back({child.exitWatch.get(), POLLIN, 0});
            watched = watched && child.exitWatch;
        }
        pollUntil(waited, watched ? std::chrono::steady_clock::time_point::max() : deadlineAfter(pollingInterval));
        if (waited.front().revents != 0) {
            char bytes[256];
            [[maybe_unused]] const auto dropped = ::read(m_woken.get(), bytes, sizeof bytes);
        }
        // The watches stand in the order of the children, after the pipe.
        auto watch = waited.begin();
        std::erase_if(children, [&watch](const Child& child) {
            ++watch;
            return (watch->revents != 0 || !child.exitWatch) && reap(child.pid);
        });
    }
}

}  // namespace platform::posix
