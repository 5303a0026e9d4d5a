#include "platform/posix/OutputStreams.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <exception>
#include <utility>

#include "platform/posix/Poll.h"

namespace platform::posix {

namespace {

constexpr std::size_t bufferSize = std::size_t{64} * 1024;
constexpr std::chrono::milliseconds closingInterval{100};
#if defined(F_SETPIPE_SZ)
// For a tool that prints much: fewer changes between it and this process.
constexpr int widePipe = 1024 * 1024;
#endif
constexpr std::size_t largeText = std::size_t{1024} * 1024;

// A large text grows in larger steps than it would by itself: moving it costs more than reading it, and room that is
// not used yet takes address space only.
void makeRoom(std::string& text, std::size_t more) {
    if (text.size() < largeText || text.capacity() - text.size() >= more) {
        return;
    }
    try {
        text.reserve(text.size() * 4);
    } catch (const std::exception&) {
        // As much as that is not to be had. Appending asks for less.
    }
}

}  // namespace

void OutputStreams::open(Descriptor output, Descriptor error) {
    const std::lock_guard lock(m_mutex);
    m_output = {std::move(output)};
    m_error = {std::move(error)};
}

bool OutputStreams::take(Stream& stream, std::string& text) {
    if (!m_buffer) {
        m_buffer = std::make_unique_for_overwrite<char[]>(bufferSize);
    }
    ssize_t count = 0;
    do {
        count = ::read(stream.descriptor.get(), m_buffer.get(), bufferSize);
    } while (count < 0 && errno == EINTR);
    if (count <= 0) {
        stream.descriptor.reset();
        return false;
    }
    const auto size = static_cast<std::size_t>(count);
#if defined(F_SETPIPE_SZ)
    if (size == bufferSize && !stream.widened) {
        stream.widened = true;
        ::fcntl(stream.descriptor.get(), F_SETPIPE_SZ, widePipe);  // refused once the user has many of them
    }
#endif
    makeRoom(text, size);
    text.append(m_buffer.get(), size);
    return true;
}

Process::Chunk OutputStreams::read(std::string& output, std::string& error,
                                   std::optional<std::chrono::milliseconds> limit) {
    using Clock = std::chrono::steady_clock;
    const auto deadline = limit ? deadlineAfter(*limit) : Clock::time_point::max();
    const std::lock_guard lock(m_mutex);
    for (;;) {
        if (m_closed) {
            m_output.descriptor.reset();
            m_error.descriptor.reset();
        }
        if (!m_output.descriptor && !m_error.descriptor) {
            return Process::Chunk::endOfStreams;
        }
        pollfd waited[] = {{m_output.descriptor.get(), POLLIN, 0}, {m_error.descriptor.get(), POLLIN, 0}};
        if (pollUntil(waited, std::min(deadline, deadlineAfter(closingInterval))) <= 0) {
            if (Clock::now() >= deadline) {
                return Process::Chunk::timedOut;
            }
            continue;
        }
        const bool fromError = waited[1].revents != 0 && (m_errorFirst || waited[0].revents == 0);
        m_errorFirst = !fromError;
        if (fromError ? take(m_error, error) : take(m_output, output)) {
            return fromError ? Process::Chunk::error : Process::Chunk::output;
        }
    }
}

void OutputStreams::close() {
    m_closed = true;
    const std::unique_lock lock(m_mutex, std::try_to_lock);
    if (lock) {
        m_output.descriptor.reset();
        m_error.descriptor.reset();
    }
}

}  // namespace platform::posix
