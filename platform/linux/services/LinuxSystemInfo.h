// Facts about the process and the machine from the kernel and /etc/os-release.
#pragma once

#include "platform/ports/SystemInfo.h"

namespace platform::linux_host {

class LinuxSystemInfo : public SystemInfo {
public:
    std::optional<std::string> environmentVariable(const std::string& name) override;
    // A random UUID in capitals, the process's number, and a count of this process, with "-" between.
    std::string globallyUniqueString() override;
    // Name and version as the distribution calls itself, for instance "Debian GNU/Linux 12 (bookworm)"; "Linux" and the
    // kernel's release when it does not say.
    std::string operatingSystemVersion() override;
    long processorCount() override;  // those in use now; at least one
    std::uint64_t physicalMemory() override;
};

}  // namespace platform::linux_host
