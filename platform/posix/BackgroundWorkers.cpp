#include "platform/posix/BackgroundWorkers.h"

#include <system_error>
#include <thread>
#include <utility>

#include "platform/posix/BlockedSignals.h"

namespace platform::posix {

BackgroundWorkers::~BackgroundWorkers() {
    std::unique_lock lock(m_mutex);
    m_threadEnded.wait(lock, [this] { return m_threads == 0; });
}

void BackgroundWorkers::perform(std::function<void()> work) {
    const std::lock_guard lock(m_mutex);
    m_work.push_back(std::move(work));
    if (m_threads < mostThreads) {
        startThreadLocked();
    }
}

std::size_t BackgroundWorkers::threads() const {
    const std::lock_guard lock(m_mutex);
    return m_threads;
}

void BackgroundWorkers::startThreadLocked() {
    try {
        const BlockedSignals blocked;
        std::thread([this] { run(); }).detach();
        ++m_threads;
    } catch (const std::system_error&) {
        // No thread to be had now: one that runs already takes the work over, or the next work brings another try.
    }
}

void BackgroundWorkers::run() {
    std::unique_lock lock(m_mutex);
    while (!m_work.empty()) {
        {
            const std::function<void()> work = std::move(m_work.front());
            m_work.pop_front();
            lock.unlock();
            work();
        }
        lock.lock();
    }
    --m_threads;
    m_threadEnded.notify_all();
}

}  // namespace platform::posix
