// Facts about this process and the machine that it runs on. Any thread; nothing throws.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

class SystemInfo {
public:
    virtual ~SystemInfo() = default;

    virtual std::optional<std::string> environmentVariable(const std::string& name) = 0;
    virtual std::string globallyUniqueString() = 0;  // never the same twice
    virtual std::string operatingSystemVersion() = 0;
    virtual long processorCount() = 0;
    virtual std::uint64_t physicalMemory() = 0;  // bytes
};

}  // namespace platform
