// Runs tools as child processes.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/ports/Processes.h"
#include "platform/posix/Descriptor.h"

namespace platform::posix {

// Tools that come with the program, for hosts that have none of theirs or one that takes other arguments.
struct ShippedTools {
    std::string folder;
    std::vector<std::string> paths;  // those of the system's tools that they stand for
};

// Processes that it made may outlive it.
class ProcessLauncher : public Processes {
public:
    // A program that was started with SIGCHLD ignored gets it back: no exit status would ever be seen otherwise.
    explicit ProcessLauncher(ShippedTools shippedTools = {});

    std::shared_ptr<Process> make(ProcessOptions options) override;

    // The shipped tool that stands for the path, when it is there. Every other path stays as it is, so that nothing
    // laid beside the program is ever run in place of a tool of the system.
    std::string locateTool(const std::string& path) override;

private:
    const ShippedTools m_shippedTools;
    const std::shared_ptr<const Descriptor> m_nullDevice;
};

}  // namespace platform::posix
