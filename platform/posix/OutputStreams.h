// The reading ends of a tool's standard output and standard error.
#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "platform/ports/Processes.h"
#include "platform/posix/Descriptor.h"

namespace platform::posix {

// Any thread; readers take turns. Closing never waits for a reader: one that is waiting notices within 100 ms, closes
// the ends and gets endOfStreams.
class OutputStreams {
public:
    // Before the first read. A stream that is not captured has no descriptor.
    void open(Descriptor output, Descriptor error);

    Process::Chunk read(std::string& output, std::string& error, std::optional<std::chrono::milliseconds> limit);
    void close();

private:
    struct Stream {
        Descriptor descriptor;
        bool widened = false;
    };

    // False when the stream has ended.
    bool take(Stream& stream, std::string& text);

    std::mutex m_mutex;
    std::atomic<bool> m_closed = false;
    Stream m_output;
    Stream m_error;
    bool m_errorFirst = false;         // they take turns, so that a flood on one stream does not hide the other
    std::unique_ptr<char[]> m_buffer;  // made for the first chunk
};

}  // namespace platform::posix
