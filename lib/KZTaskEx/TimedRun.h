// The time-out of one run of a tool.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "lib/KZTaskEx.h"
#include "lib/KZTaskEx/Timers.h"

namespace kz {

// Exists for the duration of the run, on the thread that waits for the tool. On the main thread its waits serve the
// main thread, one event each 10 ms, since the time-out is carried out there.
class TimedRun {
public:
    // The clock starts now. Whole seconds, truncated towards zero; what is negative or no number counts as 0, and
    // more than a hundred years as never.
    TimedRun(const std::string& launchPath, KZTaskEx::Seconds timeout);
    ~TimedRun();  // the time-out then finds no task and does nothing
    TimedRun(const TimedRun&) = delete;
    TimedRun& operator=(const TimedRun&) = delete;

    // Where the time-out looks for the task that it ends.
    KZTaskEx::TaskRef* theTask();

    // The tool runs: from now on the time-out may come. So one of 0 seconds comes at once after the launch, never
    // before.
    void launched();

    void waitUntilExit(platform::Process& task) const;

    // Reads until the streams end. Once the time has passed and the tool has ended, what it left behind is the end too:
    // a subtask that keeps the streams open does not hold up the caller.
    void readToEnd(platform::Process& task, std::string& output, std::string& error) const;

    // How long a tool that was asked to terminate, and its subtasks, are left alone before they are killed.
    static constexpr std::chrono::seconds graceTime{5};

private:
    struct State;  // shared with the time-out, which may be on its way when the run ends

    std::chrono::milliseconds timeToWait() const;

    const std::shared_ptr<State> m_state;
    const std::optional<Timers::Clock::time_point> m_deadline;
    const bool m_onMainThread;
    std::optional<Timers::Token> m_timer;
};

}  // namespace kz
