#pragma once

#include <atomic>
#include <map>

#include "platform/ports/SystemInfo.h"

namespace fakes {

class FakeSystemInfo : public platform::SystemInfo {
public:
    std::map<std::string, std::string> environment;
    std::string version = "12.0";
    long processors = 2;
    std::uint64_t memory = 8ULL << 30;

    std::optional<std::string> environmentVariable(const std::string& name) override {
        const auto found = environment.find(name);
        return found == environment.end() ? std::nullopt : std::optional(found->second);
    }
    std::string globallyUniqueString() override { return "UNIQUE-" + std::to_string(++m_counter); }
    std::string operatingSystemVersion() override { return version; }
    long processorCount() override { return processors; }
    std::uint64_t physicalMemory() override { return memory; }

private:
    std::atomic<int> m_counter = 0;
};

}  // namespace fakes
