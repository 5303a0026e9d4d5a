// Work that several threads do and whose results are taken in the order in which it was handed in.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace platform::linux_host {

template <typename Result>
class WorkLine {
public:
    // With fewer threads where the system gives no more; without any, work is done where it is handed in.
    explicit WorkLine(unsigned threads) {
        m_threads.reserve(threads);
        try {
            for (unsigned i = 0; i < threads; ++i) {
                m_threads.emplace_back([this] { work(); });
            }
        } catch (const std::system_error&) {
            // Those that there are have to do.
        }
    }
    // Work that no thread has begun is dropped.
    ~WorkLine() {
        {
            const std::lock_guard lock(m_mutex);
            m_ended = true;
            m_waiting.clear();
        }
        m_wake.notify_all();
        for (auto& thread : m_threads) {
            thread.join();
        }
    }
    WorkLine(const WorkLine&) = delete;
    WorkLine& operator=(const WorkLine&) = delete;

    void add(std::function<Result()> job) {
        std::packaged_task<Result()> task(std::move(job));
        m_results.push_back(task.get_future());
        if (m_threads.empty()) {
            task();
            return;
        }
        {
            const std::lock_guard lock(m_mutex);
            m_waiting.push_back(std::move(task));
        }
        m_wake.notify_one();
    }

    // Jobs whose result has not been taken.
    std::size_t size() const { return m_results.size(); }

    // Waits for the oldest job. Throws what the job has thrown.
    Result takeOldest() {
        std::future<Result> result = std::move(m_results.front());
        m_results.pop_front();
        return result.get();
    }

private:
    void work() {
        for (;;) {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_ended || !m_waiting.empty(); });
            if (m_ended) {
                return;
            }
            std::packaged_task<Result()> task = std::move(m_waiting.front());
            m_waiting.pop_front();
            lock.unlock();
            task();
        }
    }

    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_ended = false;
    std::deque<std::packaged_task<Result()>> m_waiting;
    std::deque<std::future<Result>> m_results;
    std::vector<std::thread> m_threads;
};

}  // namespace platform::linux_host
