// A serial queue of texts, one worker thread that is started with the first of them, and a handler that is given all
// the texts that have gathered since it last looked.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace kz {

// Texts one after the other in one piece of memory.
class TextBatch {
public:
    std::size_t size() const noexcept { return m_ends.size(); }
    std::size_t bytes() const noexcept { return m_bytes.size(); }
    std::string_view operator[](std::size_t index) const noexcept {
        const std::size_t begin = index == 0 ? 0 : m_ends[index - 1];
        return std::string_view(m_bytes).substr(begin, m_ends[index] - begin);
    }
    void add(std::string_view text);
    void clear() noexcept;

private:
    std::string m_bytes;
    std::vector<std::size_t> m_ends;
};

// Each text is one operation. Any thread may call any operation, the handler too.
class TextQueue {
public:
    using Handler = std::function<void(const TextBatch&)>;

    // The handler runs on the worker thread, never twice at a time, and must not throw.
    explicit TextQueue(Handler handler);
    ~TextQueue();  // as close()
    TextQueue(const TextQueue&) = delete;
    TextQueue& operator=(const TextQueue&) = delete;

    // Copies the text and returns without waiting for it; the queue has no limit. Does nothing once closed.
    void post(std::string_view text);

    // Operations that have not finished, the running ones included.
    std::size_t operationCount() const;

    // Drops the operations that have not been handed to the handler; the running ones finish.
    void cancelAllOperations();

    // Returns when every operation posted before the call has finished or was cancelled; at once on the worker thread,
    // which would wait for itself.
    void waitUntilAllOperationsAreFinished();

    // A suspended queue takes operations but begins none.
    void setSuspended(bool suspended);

    // Cancels, waits for the running operations and ends the worker thread. Not on the worker thread.
    void close();

private:
    void run();
    bool isWorkerThread() const;
    void startWorkerLocked();
    void cancelLocked();

    const Handler m_handler;
    mutable std::mutex m_mutex;
    std::condition_variable m_work;
    std::condition_variable m_finishedSome;
    std::deque<TextBatch> m_pending;
    std::vector<TextBatch> m_spare;  // emptied batches, kept for their memory
    std::uint64_t m_posted = 0;
    std::uint64_t m_finished = 0;
    std::size_t m_running = 0;  // what counts as finished once the handler returns
    bool m_idle = false;
    bool m_suspended = false;
    bool m_closed = false;
    std::thread m_worker;
    std::atomic<std::thread::id> m_workerID;
};

}  // namespace kz
