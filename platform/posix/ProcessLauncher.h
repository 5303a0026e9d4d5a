// Runs tools as child processes.
#pragma once

#include <memory>
#include <string>

#include "platform/ports/Processes.h"
#include "platform/posix/Descriptor.h"

namespace platform::posix {

// Processes that it made may outlive it.
class ProcessLauncher : public Processes {
public:
    // `shippedTools` is the folder of the tools that come with the program, empty when there are none. A program that
    // was started with SIGCHLD ignored gets it back: no exit status would ever be seen otherwise.
    explicit ProcessLauncher(std::string shippedTools = {});

    std::shared_ptr<Process> make(ProcessOptions options) override;

    // A tool of the system is looked for, by its name, among those that come with the program first: where both are
    // there, that is the one which is known to take the command line that is meant. Any other path is looked for there
    // only when nothing stands at it.
    std::string locateTool(const std::string& path) override;

private:
    const std::string m_shippedTools;
    const std::shared_ptr<const Descriptor> m_nullDevice;
};

}  // namespace platform::posix
