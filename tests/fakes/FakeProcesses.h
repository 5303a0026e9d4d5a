#pragma once

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/ports/Processes.h"

namespace fakes {

// What a tool does that is only pretended to run.
struct FakeTool {
    platform::Failure launchFailure{};
    std::string output{};
    std::string error{};
    int status = 0;
    bool runsUntilEnded = false;           // until it is terminated, killed or let end by FakeProcess::end
    bool ignoresTerminate = false;         // only kill ends it
    bool leavesStreamsOpen = false;        // a subtask holds them after the tool has ended
    std::function<void()> whenLaunched{};  // on the launching thread
};

class FakeProcess : public platform::Process {
public:
    FakeProcess(platform::ProcessOptions options, FakeTool tool)
        : m_options(std::move(options)), m_tool(std::move(tool)) {}

    const platform::ProcessOptions& options() const override { return m_options; }

    platform::Failure launch() override {
        {
            const std::lock_guard lock(m_mutex);
            if (m_launched) {
                return platform::Error{1, "task already launched: " + m_options.path};
            }
            if (m_tool.launchFailure) {
                return m_tool.launchFailure;
            }
            m_launched = true;
            m_ended = !m_tool.runsUntilEnded;
        }
        if (m_tool.whenLaunched) {
            m_tool.whenLaunched();
        }
        return std::nullopt;
    }

    bool isRunning() override {
        const std::lock_guard lock(m_mutex);
        return m_launched && !m_ended;
    }
    void waitUntilExit() override {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_launched || m_ended; });
    }
    bool waitUntilExit(std::chrono::milliseconds limit) override {
        std::unique_lock lock(m_mutex);
        return m_changed.wait_for(lock, limit, [this] { return !m_launched || m_ended; });
    }
    int terminationStatus() override {
        const std::lock_guard lock(m_mutex);
        return !m_ended ? 0 : m_signal != 0 ? m_signal : m_tool.status;
    }
    bool endedBySignal() override {
        const std::lock_guard lock(m_mutex);
        return m_signal != 0;
    }

    void terminate() override {
        const std::lock_guard lock(m_mutex);
        ++m_terminations;
        if (!m_tool.ignoresTerminate) {
            endBy(15);
        }
    }
    void kill() override {
        const std::lock_guard lock(m_mutex);
        ++m_kills;
        endBy(9);
    }

    Chunk readAvailable(std::string& output, std::string& error,
                        std::optional<std::chrono::milliseconds> limit) override {
        using Output = platform::ProcessOptions::Output;
        std::unique_lock lock(m_mutex);
        const bool piped = m_options.output == Output::pipe || m_options.error == Output::pipe;
        if (m_closed || !piped || !m_launched) {
            return Chunk::endOfStreams;
        }
        if (m_options.output == Output::pipe && !m_tool.output.empty()) {
            output += std::exchange(m_tool.output, {});
            return Chunk::output;
        }
        if (m_options.error == Output::pipe && !m_tool.error.empty()) {
            error += std::exchange(m_tool.error, {});
            return Chunk::error;
        }
        const auto over = [this] { return m_closed || (m_ended && !m_tool.leavesStreamsOpen); };
        if (!limit) {
            m_changed.wait(lock, over);
        } else if (!m_changed.wait_for(lock, *limit, over)) {
            return Chunk::timedOut;
        }
        return Chunk::endOfStreams;
    }
    void closeReadEnds() override {
        const std::lock_guard lock(m_mutex);
        m_closed = true;
        m_changed.notify_all();
    }

    void end() {  // by itself, with its status
        const std::lock_guard lock(m_mutex);
        m_ended = m_launched;
        m_changed.notify_all();
    }
    int terminations() const {
        const std::lock_guard lock(m_mutex);
        return m_terminations;
    }
    int kills() const {
        const std::lock_guard lock(m_mutex);
        return m_kills;
    }

private:
    void endBy(int signal) {
        if (m_launched && !m_ended) {
            m_ended = true;
            m_signal = signal;
            m_changed.notify_all();
        }
    }

    const platform::ProcessOptions m_options;
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    FakeTool m_tool;
    bool m_launched = false;
    bool m_ended = false;
    bool m_closed = false;
    int m_signal = 0;
    int m_terminations = 0;
    int m_kills = 0;
};

// Tools by their paths; one that is not among them runs, prints nothing and ends with 0.
class FakeProcesses : public platform::Processes {
public:
    std::map<std::string, FakeTool> tools;
    std::map<std::string, std::string> places;  // where the host keeps a tool, by the system's path

    std::shared_ptr<platform::Process> make(platform::ProcessOptions options) override {
        const auto tool = tools.find(options.path);
        auto process =
            std::make_shared<FakeProcess>(std::move(options), tool == tools.end() ? FakeTool{} : tool->second);
        const std::lock_guard lock(m_mutex);
        m_made.push_back(process);
        return process;
    }
    std::string locateTool(const std::string& path) override {
        const auto place = places.find(path);
        return place == places.end() ? path : place->second;
    }

    std::vector<std::shared_ptr<FakeProcess>> made() const {
        const std::lock_guard lock(m_mutex);
        return m_made;
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::shared_ptr<FakeProcess>> m_made;
};

}  // namespace fakes
