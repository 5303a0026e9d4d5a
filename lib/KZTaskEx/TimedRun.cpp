#include "lib/KZTaskEx/TimedRun.h"

#include <algorithm>
#include <cmath>

#include "lib/KZLog.h"
#include "platform/ports/Host.h"

namespace kz {

namespace {

using std::chrono::milliseconds;
using Clock = Timers::Clock;

// Between two looks at the main thread's events, or at a tool that outstays its time.
constexpr milliseconds slice{10};
// For reading what is in the pipes of a tool that has ended, while a subtask may go on filling them.
constexpr milliseconds drainTime{500};

std::optional<Clock::time_point> deadlineOf(KZTaskEx::Seconds timeout) {
    constexpr double never = 100.0 * 366 * 24 * 3600;  // the clock counts some 290 years
    const double seconds = std::trunc(timeout.count());
    if (seconds > never) {
        return std::nullopt;
    }
    const bool some = seconds > 0;  // no number is not
    const auto deadline = Clock::now();
    return some ? deadline + std::chrono::seconds{static_cast<std::int64_t>(seconds)} : deadline;
}

}  // namespace

struct TimedRun::State {
    std::string launchPath;
    KZTaskEx::TaskRef theTask;

    void timeout() {
        const auto task = theTask.get();
        if (!task || !task->isRunning()) {
            return;
        }
        KZLog::appendLogAndPrint("Task %@ timed out. Terminating...", launchPath);
        task->terminate();
        Timers::shared().add(Clock::now() + graceTime, [task] { task->kill(); });
    }
};

TimedRun::TimedRun(const std::string& launchPath, KZTaskEx::Seconds timeout)
    : m_state(std::make_shared<State>()),
      m_deadline(deadlineOf(timeout)),
      m_onMainThread(platform::host().mainThread->isCurrent()) {
    m_state->launchPath = launchPath;
}

TimedRun::~TimedRun() {
    m_state->theTask.set(nullptr);
    if (m_timer) {
        Timers::shared().cancel(*m_timer);
    }
}

KZTaskEx::TaskRef* TimedRun::theTask() { return &m_state->theTask; }

void TimedRun::launched() {
    if (m_deadline) {
        auto* const mainThread = platform::host().mainThread;
        m_timer = Timers::shared().add(
            *m_deadline, [mainThread, state = m_state] { mainThread->perform([state] { state->timeout(); }); });
    }
}

void TimedRun::waitUntilExit(platform::Process& task) const {
    if (!m_onMainThread) {
        task.waitUntilExit();
        return;
    }
    // The wait is for the tool, whose end is seen at once; the events get the moments between.
    while (!task.waitUntilExit(slice)) {
        platform::host().mainThread->runNextEvent(milliseconds::zero());
    }
}

milliseconds TimedRun::timeToWait() const {
    if (m_onMainThread) {
        return slice;
    }
    constexpr milliseconds longest = std::chrono::hours{24};
    if (!m_deadline) {
        return longest;
    }
    return std::clamp(std::chrono::ceil<milliseconds>(*m_deadline - Clock::now()), slice, longest);
}

void TimedRun::readToEnd(platform::Process& task, std::string& output, std::string& error) const {
    using Chunk = platform::Process::Chunk;
    auto nextEvent = Clock::now() + slice;
    while (task.readAvailable(output, error, timeToWait()) != Chunk::endOfStreams) {
        const auto now = Clock::now();
        if (m_onMainThread && now >= nextEvent) {
            platform::host().mainThread->runNextEvent(milliseconds::zero());
            nextEvent = Clock::now() + slice;
        }
        if (m_deadline && now >= *m_deadline && !task.isRunning()) {
            Chunk last = Chunk::output;
            while (Clock::now() < now + drainTime && (last == Chunk::output || last == Chunk::error)) {
                last = task.readAvailable(output, error, milliseconds::zero());
            }
            return;
        }
    }
}

}  // namespace kz
