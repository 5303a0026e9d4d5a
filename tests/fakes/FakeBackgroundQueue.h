#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include "platform/ports/BackgroundQueue.h"

namespace fakes {

// Either does each piece of work in a thread of its own before it returns, so that an answer has come at once, or keeps
// the work until it is told to do it.
class FakeBackgroundQueue : public platform::BackgroundQueue {
public:
    void perform(std::function<void()> work) override {
        ++pieces;
        if (held) {
            const std::lock_guard lock(m_mutex);
            m_held.push_back(std::move(work));
        } else {
            std::thread(work).join();
        }
    }

    // Does what was kept, in the order in which it came.
    void release() {
        std::vector<std::function<void()>> work;
        {
            const std::lock_guard lock(m_mutex);
            work.swap(m_held);
        }
        for (const auto& piece : work) {
            std::thread(piece).join();
        }
    }

    std::atomic<bool> held = false;
    std::atomic<int> pieces = 0;

private:
    std::mutex m_mutex;
    std::vector<std::function<void()>> m_held;
};

}  // namespace fakes
