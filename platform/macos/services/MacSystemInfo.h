#pragma once

#include "platform/ports/SystemInfo.h"

namespace platform::macos {

class MacSystemInfo : public SystemInfo {
public:
    std::optional<std::string> environmentVariable(const std::string& name) override;
    std::string globallyUniqueString() override;
    std::string operatingSystemVersion() override;
    long processorCount() override;
    std::uint64_t physicalMemory() override;
};

}  // namespace platform::macos
