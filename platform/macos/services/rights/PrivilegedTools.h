// Tools that were started with administrator rights and are not waited for.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/posix/Descriptor.h"

namespace platform::macos {

// What they write is read and dropped until they end, by one thread for all of them: a tool whose stream were closed
// would be ended by its next word, one whose stream were left alone would stop when that is full. Those that have ended
// are taken from the host's table of processes.
//
// Nothing tells such a tool's number. It is known as a child in this process's own process group: every child that
// posix::spawn starts leads a group of its own, and is left to whoever waits for it. So nothing in this process may use
// popen, system or a fork of its own whose end it waits for.
class PrivilegedTools {
public:
    PrivilegedTools() = default;
    ~PrivilegedTools();  // closes the streams that are open
    PrivilegedTools(const PrivilegedTools&) = delete;
    PrivilegedTools& operator=(const PrivilegedTools&) = delete;

    // Of a Mac's 256 descriptors these leave enough to everything else.
    static constexpr std::size_t mostStreams = 64;

    // Whether there is somebody to read one more stream; false with the most open already.
    bool canReadAnother();

    // Takes the stream over; returns at once. Only after canReadAnother.
    void readToEnd(std::FILE* stream);

    // One may have ended whose stream is not read here. Returns at once.
    void noteEnd();

private:
    class Streams;

    bool startThread();  // with the lock held
    void wakeThread();   // with the lock held
    void run();

    std::mutex m_mutex;
    std::vector<std::FILE*> m_newcomers;
    bool m_mayHaveEnded = false;
    bool m_closing = false;
    posix::Descriptor m_wake;
    posix::Descriptor m_woken;
    std::atomic<std::size_t> m_open = 0;
    std::thread m_thread;
};

}  // namespace platform::macos
