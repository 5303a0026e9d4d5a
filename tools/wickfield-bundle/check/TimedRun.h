// A helper program that is given so long and no longer.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>

#include "platform/ports/Processes.h"

namespace wickfield_bundle {

// Runs beside whatever its owner does until he asks for the result. One that nobody asked for is ended with the object.
class TimedRun {
public:
    struct Result {
        bool started = false;
        bool timedOut = false;
        bool endedBySignal = false;
        int status = 0;  // exit code, or the signal's number
        std::string output;
        std::string error;
    };

    // The time counts from here on. Streams that the options pipe are collected.
    TimedRun(platform::ProcessOptions options, std::chrono::milliseconds limit);
    ~TimedRun();
    TimedRun(const TimedRun&) = delete;
    TimedRun& operator=(const TimedRun&) = delete;

    // Waits for the end of the program, or of its time, or for more than `mostOutput` bytes; in the last two cases it
    // is ended, and counts as timed out. At most once.
    Result finish();

    static constexpr std::size_t mostOutput = std::size_t{256} * 1024;

private:
    std::chrono::milliseconds timeLeft() const;

    const std::chrono::steady_clock::time_point m_deadline;
    std::shared_ptr<platform::Process> m_process;  // null once it has ended, or if it did not start
};

}  // namespace wickfield_bundle
