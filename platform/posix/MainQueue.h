// Work for the main thread.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "platform/ports/MainThread.h"

namespace platform::posix {

// The thread that makes it is the main thread. Without a toolkit runNextEvent is the whole event loop. A toolkit with a
// loop of its own passes `wake`, which has that loop call serve() soon, and overrides runNextEvent.
//
// Work must not throw; that ends the program, since nobody could be told. It may run a nested loop, in which the work
// behind it goes on. The queue must outlive every thread that uses it.
class MainQueue : public MainThread {
public:
    // `wake` is called on the thread that hands work over, without a lock held; it must neither block nor throw.
    explicit MainQueue(std::function<void()> wake = {});
    MainQueue(const MainQueue&) = delete;
    MainQueue& operator=(const MainQueue&) = delete;

    bool isCurrent() override;
    void performAndWait(const std::function<void()>& work) override;
    void perform(std::function<void()> work) override;
    void runNextEvent(std::chrono::milliseconds slice) override;

    // Main thread only: does the work that is waiting, in order. Work that is handed over meanwhile is left for the
    // next time (wake is called for it), so that work which renews itself does not hold up the toolkit's own events.
    void serve();

    // Any thread: how many pieces of work nobody has begun yet.
    std::size_t waiting();

private:
    void add(std::function<void()> work);
    bool serveOne();  // false when nothing was waiting

    const std::thread::id m_mainThread = std::this_thread::get_id();
    const std::function<void()> m_wake;
    std::mutex m_mutex;
    std::condition_variable m_added;
    std::condition_variable m_done;
    std::deque<std::function<void()>> m_work;
};

}  // namespace platform::posix
