#include "platform/posix/MainQueue.h"

#include <utility>

namespace platform::posix {

namespace {

void run(const std::function<void()>& work) noexcept { work(); }

}  // namespace

MainQueue::MainQueue(std::function<void()> wake) : m_wake(std::move(wake)) {}

bool MainQueue::isCurrent() { return std::this_thread::get_id() == m_mainThread; }

void MainQueue::add(std::function<void()> work) {
    {
        const std::lock_guard lock(m_mutex);
        m_work.push_back(std::move(work));
        m_added.notify_one();
    }
    if (m_wake) {
        m_wake();
    }
}

void MainQueue::performAndWait(const std::function<void()>& work) {
    if (isCurrent()) {
        run(work);
        return;
    }
    bool done = false;
    add([this, &work, &done] {
        run(work);
        const std::lock_guard lock(m_mutex);
        done = true;
        m_done.notify_all();
    });
    std::unique_lock lock(m_mutex);
    m_done.wait(lock, [&done] { return done; });
}

void MainQueue::perform(std::function<void()> work) { add(std::move(work)); }

bool MainQueue::serveOne() {
    std::function<void()> work;
    {
        const std::lock_guard lock(m_mutex);
        if (m_work.empty()) {
            return false;
        }
        work = std::move(m_work.front());
        m_work.pop_front();
    }
    run(work);
    return true;
}

void MainQueue::runNextEvent(std::chrono::milliseconds slice) {
    {
        std::unique_lock lock(m_mutex);
        m_added.wait_for(lock, slice, [this] { return !m_work.empty(); });
    }
    serveOne();
}

void MainQueue::serve() {
    for (std::size_t left = waiting(); left > 0 && serveOne(); --left) {
    }
}

std::size_t MainQueue::waiting() {
    const std::lock_guard lock(m_mutex);
    return m_work.size();
}

}  // namespace platform::posix
