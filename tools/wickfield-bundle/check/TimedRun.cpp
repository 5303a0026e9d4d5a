#include "tools/wickfield-bundle/check/TimedRun.h"

#include <algorithm>
#include <utility>

#include "platform/ports/Host.h"

namespace wickfield_bundle {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

TimedRun::TimedRun(platform::ProcessOptions options, milliseconds limit)
    : m_deadline(steady_clock::now() + limit), m_process(platform::host().processes->make(std::move(options))) {
    if (m_process->launch()) {
        m_process.reset();
    }
}

TimedRun::~TimedRun() {
    if (m_process) {
        m_process->kill();
    }
}

milliseconds TimedRun::timeLeft() const {
    const auto left = std::chrono::duration_cast<milliseconds>(m_deadline - steady_clock::now());
    return std::max(left, milliseconds{0});
}

TimedRun::Result TimedRun::finish() {
    Result result;
    if (!m_process) {
        return result;
    }
    result.started = true;
    const auto process = std::exchange(m_process, nullptr);
    auto seen = platform::Process::Chunk::output;
    while (seen != platform::Process::Chunk::endOfStreams && seen != platform::Process::Chunk::timedOut &&
           result.output.size() + result.error.size() <= mostOutput) {
        seen = process->readAvailable(result.output, result.error, timeLeft());
    }
    if (seen != platform::Process::Chunk::endOfStreams || !process->waitUntilExit(timeLeft())) {
        result.timedOut = true;
        process->kill();
        process->waitUntilExit();
    }
    result.status = process->terminationStatus();
    result.endedBySignal = process->endedBySignal();
    return result;
}

}  // namespace wickfield_bundle
