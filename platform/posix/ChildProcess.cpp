#include "platform/posix/ChildProcess.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include "platform/posix/FileErrors.h"
#include "platform/posix/Pipe.h"
#include "platform/posix/Reaper.h"

namespace platform::posix {

struct ChildProcess::Ends {
    Descriptor input;
    Descriptor output;
    Descriptor error;
};

ChildProcess::ChildProcess(ProcessOptions options, std::shared_ptr<const Descriptor> nullDevice)
    : m_options(std::move(options)), m_nullDevice(std::move(nullDevice)) {}

ChildProcess::~ChildProcess() {
    if (m_launched && !m_reaped) {
        Reaper::shared().adopt(m_child, std::move(m_exitWatch));
    }
}

Failure ChildProcess::openStreams(Ends& ends) {
    const bool usesNullDevice = m_options.input == ProcessOptions::Input::null ||
                                m_options.output == ProcessOptions::Output::null ||
                                m_options.error == ProcessOptions::Output::null;
    if (usesNullDevice && !*m_nullDevice) {
        return Error{ENXIO, "the null device is missing, so " + m_options.path + " was not started"};
    }
    Descriptor output;
    Descriptor error;
    const auto open = [](Descriptor& ours, Descriptor& theirs, bool toTheTool) {
        auto pipe = makePipe();
        if (!pipe) {
            return false;
        }
        ours = std::move(toTheTool ? pipe->writeEnd : pipe->readEnd);
        theirs = std::move(toTheTool ? pipe->readEnd : pipe->writeEnd);
        return true;
    };
    if ((m_options.input == ProcessOptions::Input::pipe && !open(m_input, ends.input, true)) ||
        (m_options.output == ProcessOptions::Output::pipe && !open(output, ends.output, false)) ||
        (m_options.error == ProcessOptions::Output::pipe && !open(error, ends.error, false))) {
        const int code = errno;
        return Error{code, "no pipe for " + m_options.path + " (" + meaningOf(code) + ")"};
    }
    m_streams.open(std::move(output), std::move(error));
    return std::nullopt;
}

Failure ChildProcess::launch() {
    const std::lock_guard lock(m_mutex);
    if (m_launched) {
        return Error{EALREADY, "task already launched: " + m_options.path};
    }
    using Output = ProcessOptions::Output;
    Ends ends;
    if (auto failure = openStreams(ends)) {
        m_input.reset();
        return failure;
    }
    const auto chosen = [this](Output kind, const Descriptor& pipe) {
        return kind == Output::pipe ? pipe.get() : kind == Output::null ? m_nullDevice->get() : -1;
    };
    StandardStreams streams;
    streams.input = m_options.input == ProcessOptions::Input::pipe ? ends.input.get() : m_nullDevice->get();
    streams.output = chosen(m_options.output, ends.output);
    streams.error = chosen(m_options.error, ends.error);
    auto result = spawn(m_options, streams);
    if (auto* const error = std::get_if<Error>(&result)) {
        m_input.reset();
        m_streams.open({}, {});
        return std::move(*error);
    }
    m_child = std::get<pid_t>(result);
    m_launched = true;
    return std::nullopt;
}

void ChildProcess::noteState(const ExitState& state) {
    if (state.ended && !m_state.ended) {
        m_state = state;
        m_reaped = state.reapedElsewhere;
    }
}

void ChildProcess::reapWhenUnused() {
    if (m_state.ended && !m_reaped && m_waiting == 0 && !m_askedToEnd) {
        m_reaped = reap(m_child);
        m_exitWatch.reset();
    }
}

bool ChildProcess::hasEnded() {
    if (m_launched && !m_state.ended) {
        noteState(exitState(m_child, Blocking::no));
    }
    reapWhenUnused();
    return m_state.ended;
}

bool ChildProcess::isRunning() {
    const std::lock_guard lock(m_mutex);
    return m_launched && !hasEnded();
}

void ChildProcess::waitUntilExit() {
    std::unique_lock lock(m_mutex);
    if (!m_launched || hasEnded()) {
        return;
    }
    ++m_waiting;
    lock.unlock();
    const ExitState state = exitState(m_child, Blocking::yes);
    lock.lock();
    --m_waiting;
    noteState(state);
    reapWhenUnused();
}

bool ChildProcess::waitUntilExit(std::chrono::milliseconds limit) {
    std::unique_lock lock(m_mutex);
    if (!m_launched || hasEnded()) {
        return true;
    }
    if (limit.count() <= 0) {
        return false;
    }
    if (!m_exitWatch) {
        m_exitWatch = openExitWatch(m_child);
    }
    ++m_waiting;
    lock.unlock();
    waitForExit(m_child, m_exitWatch, limit);
    lock.lock();
    --m_waiting;
    return hasEnded();
}

int ChildProcess::terminationStatus() {
    const std::lock_guard lock(m_mutex);
    return hasEnded() ? m_state.status : 0;
}

bool ChildProcess::endedBySignal() {
    const std::lock_guard lock(m_mutex);
    return hasEnded() && m_state.bySignal;
}

void ChildProcess::signalGroup(int signal) {
    ::kill(-m_child, signal);
    if (::getpgid(m_child) != m_child) {
        ::kill(m_child, signal);  // a tool may have moved to another group
    }
}

void ChildProcess::terminate() {
    const std::lock_guard lock(m_mutex);
    if (m_launched && !hasEnded()) {
        m_askedToEnd = true;
        signalGroup(SIGTERM);
    }
}

void ChildProcess::kill() {
    const std::lock_guard lock(m_mutex);
    if (!m_launched || (hasEnded() && m_reaped)) {
        return;
    }
    signalGroup(SIGKILL);
    m_askedToEnd = false;
    reapWhenUnused();
}

Process::Chunk ChildProcess::readAvailable(std::string& output, std::string& error,
                                           std::optional<std::chrono::milliseconds> limit) {
    return m_streams.read(output, error, limit);
}

}  // namespace platform::posix
