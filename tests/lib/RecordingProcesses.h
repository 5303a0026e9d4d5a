#pragma once

#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "platform/ports/Processes.h"

// Runs the host's real tools and remembers their command lines; a tool of `substitutes` is replaced by another.
class RecordingProcesses : public platform::Processes {
public:
    struct CommandLine {
        std::string tool;
        std::vector<std::string> arguments;
        friend bool operator==(const CommandLine&, const CommandLine&) = default;
    };

    explicit RecordingProcesses(platform::Processes& real) : m_real(real) {}

    std::map<std::string, std::string> substitutes;

    std::shared_ptr<platform::Process> make(platform::ProcessOptions options) override {
        const std::lock_guard lock(m_mutex);
        m_commands.push_back({.tool = options.path, .arguments = options.arguments});
        return m_real.make(std::move(options));
    }
    std::string locateTool(const std::string& path) override {
        const auto found = substitutes.find(path);
        return found == substitutes.end() ? m_real.locateTool(path) : found->second;
    }
    std::vector<CommandLine> commands() const {
        const std::lock_guard lock(m_mutex);
        return m_commands;
    }

private:
    platform::Processes& m_real;
    mutable std::mutex m_mutex;
    std::vector<CommandLine> m_commands;
};
