#include "lib/base/TextQueue.h"

#include <system_error>
#include <utility>

namespace kz {

namespace {

// A batch is what cannot be cancelled any more, and what is written in one go.
constexpr std::size_t fullBatch = 1U << 18U;  // bytes
constexpr std::size_t mostSpares = 4;

}  // namespace

void TextBatch::add(std::string_view text) {
    m_ends.push_back(m_bytes.size() + text.size());
    m_bytes.append(text);
}

void TextBatch::clear() noexcept {
    m_bytes.clear();
    m_ends.clear();
}

TextQueue::TextQueue(Handler handler) : m_handler(std::move(handler)) {}

TextQueue::~TextQueue() { close(); }

void TextQueue::post(std::string_view text) {
    const std::lock_guard lock(m_mutex);
    if (m_closed) {
        return;
    }
    if (m_pending.empty() || m_pending.back().bytes() + text.size() > fullBatch) {
        if (m_spare.empty()) {
            m_pending.emplace_back();
        } else {
            m_pending.push_back(std::move(m_spare.back()));
            m_spare.pop_back();
        }
    }
    m_pending.back().add(text);
    ++m_posted;
    if (!m_worker.joinable()) {
        startWorkerLocked();
    } else if (m_idle) {
        m_idle = false;
        m_work.notify_one();
    }
}

void TextQueue::startWorkerLocked() {
    try {
        m_worker = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        // No thread to be had now: what has gathered is lost, and nobody must wait for it.
        cancelLocked();
    }
}

std::size_t TextQueue::operationCount() const {
    const std::lock_guard lock(m_mutex);
    return static_cast<std::size_t>(m_posted - m_finished);
}

void TextQueue::cancelAllOperations() {
    const std::lock_guard lock(m_mutex);
    cancelLocked();
}

void TextQueue::cancelLocked() {
    m_pending.clear();
    // Those that were dropped finish together with the running ones, so that nobody who waits for a running operation
    // is told too early.
    if (m_running > 0) {
        m_running = static_cast<std::size_t>(m_posted - m_finished);
    } else {
        m_finished = m_posted;
        m_finishedSome.notify_all();
    }
}

void TextQueue::waitUntilAllOperationsAreFinished() {
    if (isWorkerThread()) {
        return;
    }
    std::unique_lock lock(m_mutex);
    const std::uint64_t awaited = m_posted;
    m_finishedSome.wait(lock, [&] { return m_finished >= awaited; });
}

void TextQueue::setSuspended(bool suspended) {
    const std::lock_guard lock(m_mutex);
    m_suspended = suspended;
    m_work.notify_one();
}

void TextQueue::close() {
    std::thread worker;
    {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
        cancelLocked();
        m_work.notify_one();
        worker.swap(m_worker);
    }
    if (worker.joinable()) {
        worker.join();
    }
}

bool TextQueue::isWorkerThread() const { return m_workerID.load() == std::this_thread::get_id(); }

void TextQueue::run() {
    m_workerID.store(std::this_thread::get_id());
    TextBatch batch;
    std::unique_lock lock(m_mutex);
    for (;;) {
        while (!m_closed && (m_suspended || m_pending.empty())) {
            m_idle = true;
            m_work.wait(lock);
        }
        m_idle = false;
        if (m_closed) {
            return;
        }
        batch = std::move(m_pending.front());
        m_pending.pop_front();
        m_running = batch.size();
        lock.unlock();
        m_handler(batch);
        const bool ordinary = batch.bytes() <= fullBatch;
        batch.clear();
        lock.lock();
        m_finished += std::exchange(m_running, 0);
        if (ordinary && m_spare.size() < mostSpares) {
            m_spare.push_back(std::move(batch));
        }
        m_finishedSome.notify_all();
    }
}

}  // namespace kz
