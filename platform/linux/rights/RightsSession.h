// A helper that runs with administrator rights and does what this process asks.
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "platform/linux/rights/wire/Wire.h"
#include "platform/posix/Descriptor.h"

namespace platform::rights {

// Any thread; requests take turns until their tool has been started. The helper ends when this object goes; tools that
// it has started run on.
class RightsSession {
public:
    explicit RightsSession(posix::Descriptor socket) : m_socket(std::move(socket)) {}

    // Starts the tool. 0 or an errno: of starting it, EPERM when the helper finds it unsafe, EPIPE when the helper is
    // gone, E2BIG, EINVAL. With `drain` it returns once the tool has closed its output, else when it has
    // ended or 100 ms later, and what it writes goes nowhere.
    int run(const std::string& tool, const std::vector<std::string>& arguments, bool drain);

    // Starts the tool and hands over the end of its output for reading.
    struct Started {
        int error = 0;
        pid_t tool = -1;
        posix::Descriptor output{};
    };
    Started start(const std::string& tool, const std::vector<std::string>& arguments, bool wantsOutput);

    // To a tool that the helper has started, and to its subtasks. 0 or an errno: ESRCH for any other process.
    int sendSignal(pid_t tool, int number);

    bool isAlive();

private:
    Started exchange(const wire::Message& request);

    std::mutex m_mutex;
    posix::Descriptor m_socket;  // none once the helper is gone
    wire::Decoder m_decoder;
};

}  // namespace platform::rights
