#include "lib/KZTaskEx/Timers.h"

#include <system_error>
#include <thread>
#include <utility>

namespace kz {

Timers& Timers::shared() {
    static auto* const timers = new Timers;
    return *timers;
}

Timers::Token Timers::add(Clock::time_point time, std::function<void()> work) {
    const std::lock_guard lock(m_mutex);
    const Token token{time, ++m_number};
    m_work.emplace(token, std::move(work));
    startThread();
    // Cancelled work does not disturb the thread, which wakes once for nothing and looks further ahead. So a long row
    // of short runs, each with a time-out of its own, hardly ever comes here.
    if (time < m_wakesAt) {
        m_wakesAt = time;
        m_earlier.notify_one();
    }
    return token;
}

void Timers::cancel(const Token& token) {
    std::function<void()> dropped;  // what it owns goes after the lock
    const std::lock_guard lock(m_mutex);
    if (const auto found = m_work.find(token); found != m_work.end()) {
        dropped = std::move(found->second);
        m_work.erase(found);
    }
}

std::size_t Timers::waiting() const {
    const std::lock_guard lock(m_mutex);
    return m_work.size();
}

void Timers::startThread() {
    if (m_running) {
        return;
    }
    try {
        std::thread([this] { run(); }).detach();
        m_running = true;
    } catch (const std::system_error&) {
        // No thread to be had now: the work waits for the next that is added.
        m_running = false;
    }
}

void Timers::run() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        while (!m_work.empty() && m_work.begin()->first.time <= Clock::now()) {
            // Called with the lock held, so that cancel can promise what it does.
            const auto due = m_work.extract(m_work.begin());
            due.mapped()();
        }
        m_wakesAt = m_work.empty() ? Clock::time_point::max() : m_work.begin()->first.time;
        if (m_work.empty()) {
            m_earlier.wait(lock);
        } else {
            m_earlier.wait_until(lock, m_wakesAt);
        }
    }
}

}  // namespace kz
