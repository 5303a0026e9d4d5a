#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/ports/MainThread.h"

namespace fakes {

// The thread that made it is the main thread; its event loop is whoever calls runNextEvent.
class FakeMainThread : public platform::MainThread {
public:
    bool isCurrent() override { return std::this_thread::get_id() == m_main; }

    void performAndWait(const std::function<void()>& work) override {
        if (isCurrent()) {
            work();
            return;
        }
        auto done = std::make_shared<bool>(false);
        std::unique_lock lock(m_mutex);
        m_queue.emplace_back([this, &work, done] {
            work();
            const std::lock_guard inner(m_mutex);
            *done = true;
            m_changed.notify_all();
        });
        m_changed.notify_all();
        m_changed.wait(lock, [&] { return *done; });
    }

    void perform(std::function<void()> work) override {
        const std::lock_guard lock(m_mutex);
        m_queue.push_back(std::move(work));
        m_changed.notify_all();
    }

    void runNextEvent(std::chrono::milliseconds slice) override {
        std::function<void()> work;
        {
            std::unique_lock lock(m_mutex);
            ++slices;
            longestSlice = std::max(longestSlice, slice);
            if (!m_changed.wait_for(lock, slice, [&] { return !m_queue.empty(); })) {
                return;
            }
            work = std::move(m_queue.front());
            m_queue.pop_front();
        }
        work();
    }

    int slices = 0;  // how often the loop was run
    std::chrono::milliseconds longestSlice{0};

private:
    const std::thread::id m_main = std::this_thread::get_id();
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::function<void()>> m_queue;
};

}  // namespace fakes
