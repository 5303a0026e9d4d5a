#include "lib/KZFileManager/HashPipeline.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace KZFileManager {

HashPipeline::HashPipeline(std::optional<DigestContext> context, Buffers buffers)
    : m_context(std::move(context)), m_lengths(buffers.count) {
    m_buffers.reserve(buffers.count);
    for (std::size_t made = 0; made < buffers.count; ++made) {
        m_buffers.emplace_back(buffers.size);
    }
}

HashPipeline::~HashPipeline() { endThread(); }

bool HashPipeline::isReady() const {
    return std::all_of(m_buffers.begin(), m_buffers.end(),
                       [](const ChunkBuffer& buffer) { return static_cast<bool>(buffer); });
}

std::span<std::byte> HashPipeline::nextBuffer() {
    std::unique_lock lock(m_mutex);
    if (m_filled - m_hashed == m_buffers.size()) {
        m_hashedSome.wait(lock, [this] { return m_filled - m_hashed <= m_buffers.size() / 2; });
    }
    return m_buffers[m_filled % m_buffers.size()].bytes();
}

void HashPipeline::hash(std::size_t bytes) {
    const std::lock_guard lock(m_mutex);
    m_lengths[m_filled % m_buffers.size()] = bytes;
    ++m_filled;
    if (!m_context) {
        m_hashed = m_filled;
    } else if (isWorthWaking()) {
        startThread();
        if (m_thread.joinable()) {
            m_filledSome.notify_one();
        } else {
            hashHere();
        }
    }
}

std::string HashPipeline::finish() {
    endThread();
    if (!m_context) {
        return {};
    }
    hashHere();
    return m_context->finish();
}

void HashPipeline::hashHere() {
    for (; m_hashed < m_filled; ++m_hashed) {
        const std::size_t index = m_hashed % m_buffers.size();
        m_context->update(m_buffers[index].bytes().first(m_lengths[index]));
    }
}

void HashPipeline::startThread() {
    if (m_thread.joinable() || !m_threadWanted) {
        return;
    }
    try {
        m_thread = std::thread([this] { run(); });
    } catch (const std::system_error&) {
        m_threadWanted = false;
    }
}

bool HashPipeline::isWorthWaking() const { return m_filled - m_hashed >= (m_buffers.size() + 1) / 2; }

void HashPipeline::endThread() {
    if (m_thread.joinable()) {
        {
            const std::lock_guard lock(m_mutex);
            m_ended = true;
            m_filledSome.notify_one();
        }
        m_thread.join();
    }
}

void HashPipeline::run() {
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_filledSome.wait(lock, [this] { return m_ended || isWorthWaking(); });
        if (m_hashed == m_filled) {
            return;
        }
        while (m_hashed < m_filled) {
            const std::size_t index = m_hashed % m_buffers.size();
            const auto bytes = m_buffers[index].bytes().first(m_lengths[index]);
            lock.unlock();
            m_context->update(bytes);
            lock.lock();
            ++m_hashed;
            if (m_filled - m_hashed == m_buffers.size() / 2) {
                m_hashedSome.notify_one();
            }
        }
    }
}

}  // namespace KZFileManager
