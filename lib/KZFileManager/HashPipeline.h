// Hashing in a thread of its own while the next bytes are read.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "lib/KZFileManager/ChunkBuffer.h"
#include "lib/KZFileManager/DigestContext.h"

namespace KZFileManager {

// A ring of buffers: one is filled while those before it are hashed. One thread fills. The two wake each other only
// when half of the ring is waiting, so that neither is held up by every buffer of the other on a busy machine; a file
// that does not fill so much needs no thread. Without a context nothing is hashed and there is no thread; a thread that
// cannot be had is done without.
class HashPipeline {
public:
    struct Buffers {
        std::size_t count = 2;
        std::size_t size = chunkSize;  // bytes each
    };
    HashPipeline(std::optional<DigestContext> context, Buffers buffers);
    ~HashPipeline();
    HashPipeline(const HashPipeline&) = delete;
    HashPipeline& operator=(const HashPipeline&) = delete;

    // False when there is not enough memory; nothing else may be called then.
    bool isReady() const;

    // The buffer to fill next. Blocks until what was in it is hashed.
    std::span<std::byte> nextBuffer();

    // Hands over that many bytes of the buffer that nextBuffer gave last. They must stay as they are, and can be read,
    // until nextBuffer is called once more.
    void hash(std::size_t bytes);

    // Blocks until all is hashed; "" without a context. The last call.
    std::string finish();

private:
    bool isWorthWaking() const;
    void hashHere();
    void startThread();
    void run();
    void endThread();

    std::optional<DigestContext> m_context;
    std::vector<ChunkBuffer> m_buffers;
    std::vector<std::size_t> m_lengths;  // of what the buffers hold

    std::mutex m_mutex;
    std::condition_variable m_filledSome;
    std::condition_variable m_hashedSome;
    std::uint64_t m_filled = 0;  // buffers, since the start
    std::uint64_t m_hashed = 0;
    bool m_ended = false;
    bool m_threadWanted = true;
    std::thread m_thread;
};

}  // namespace KZFileManager
