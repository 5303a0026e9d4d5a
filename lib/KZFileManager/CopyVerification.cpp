#include "lib/KZFileManager/CopyVerification.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <system_error>
#include <thread>

#include "lib/KZFileManager/ChunkBuffer.h"
#include "lib/KZFileManager/DigestContext.h"
#include "lib/KZLog.h"

namespace KZFileManager {

namespace {

std::string digestOf(CopyDestination& destination, platform::DigestKind kind) {
    DigestContext context(kind);
    const ChunkBuffer buffer;
    int code = buffer ? destination.file->seek(0) : ENOMEM;
    while (code == 0) {
        const auto [bytes, failure] = destination.file->read(buffer.bytes());
        if (failure == 0 && bytes == 0) {
            return context.finish();
        }
        context.update(buffer.bytes().first(bytes));
        code = failure == EINTR ? 0 : failure;
    }
    KZLog::appendLogAndPrint("Error reading file %@ - aborting...", destination.path);
    return {};
}

// Waits for its threads at the end.
struct JoinedThreads {
    std::vector<std::thread> threads;

    JoinedThreads() = default;
    ~JoinedThreads() { join(); }
    JoinedThreads(const JoinedThreads&) = delete;
    JoinedThreads& operator=(const JoinedThreads&) = delete;

    void join() {
        for (std::thread& thread : threads) {
            thread.join();
        }
        threads.clear();
    }
};

}  // namespace

std::vector<std::string> digestsOfDestinations(std::vector<CopyDestination>& destinations, platform::DigestKind kind) {
    std::vector<std::string> digests(destinations.size());
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        for (std::size_t index = next++; index < destinations.size(); index = next++) {
            digests[index] = digestOf(destinations[index], kind);
        }
    };
    const std::size_t wanted = std::min<std::size_t>(destinations.size(), std::thread::hardware_concurrency());
    JoinedThreads others;
    others.threads.reserve(wanted);
    while (others.threads.size() + 1 < wanted) {
        try {
            others.threads.emplace_back(work);
        } catch (const std::system_error&) {
            break;  // no more threads to be had: those that are there do all of it
        }
    }
    work();
    others.join();
    return digests;
}

}  // namespace KZFileManager
