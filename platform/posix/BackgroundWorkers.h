// A few threads that serve the background queue.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

#include "platform/ports/BackgroundQueue.h"

namespace platform::posix {

// Threads are started as work comes and end when there is none, so that a process without such work has none of them.
// Work that is stuck holds one thread; with all of them stuck the rest waits. The object must outlive its threads: it
// is either never destroyed, or waits for all work in its destructor.
class BackgroundWorkers : public BackgroundQueue {
public:
    static constexpr std::size_t mostThreads = 16;

    BackgroundWorkers() = default;
    ~BackgroundWorkers() override;
    BackgroundWorkers(const BackgroundWorkers&) = delete;
    BackgroundWorkers& operator=(const BackgroundWorkers&) = delete;

    void perform(std::function<void()> work) override;

    std::size_t threads() const;  // at present

private:
    void startThreadLocked();
    void run();

    mutable std::mutex m_mutex;
    std::condition_variable m_threadEnded;
    std::deque<std::function<void()>> m_work;
    std::size_t m_threads = 0;
};

}  // namespace platform::posix
