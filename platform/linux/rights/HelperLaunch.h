// A helper that is being started, through whatever program gives it administrator rights.
#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/linux/rights/RightsSession.h"
#include "platform/linux/rights/wire/Wire.h"
#include "platform/posix/Descriptor.h"

namespace platform::rights {

// The program that is started (sudo, say) is a direct child, leads a session of its own without a terminal, has the
// helper's end of the socket as its standard input, and is reaped when it ends. What it started ends with the socket:
// when this object goes, unless the session was taken.
class HelperLaunch {
public:
    // The path of the program, then its arguments. An environment of "NAME=value" replaces the program's own. The
    // program inherits one descriptor more than its standard streams as number 3, unless that is negative. Or an errno.
    static std::variant<HelperLaunch, int> start(const std::vector<std::string>& command,
                                                 const std::optional<std::vector<std::string>>& environment = {},
                                                 int inherited = -1);

    int socket() const { return m_socket.get(); }        // readable: look at progress()
    int messages() const { return m_messages.get(); }    // reading end of what it prints; does not block
    int exitWatch() const { return m_exitWatch.get(); }  // readable when the direct child has ended

    enum class Progress {
        waiting,
        running,  // the helper has said, as root, that it is there
        ended,    // closed, or something else is at the other end
    };
    // Takes what the socket has; does not block.
    Progress progress();

    // The exit code of the direct child, 128 and the signal's number for one that was killed; none while it runs. For
    // once: the child is reaped.
    std::optional<int> exitCode();

    // Once running: the session; the child is left to end by itself.
    std::unique_ptr<RightsSession> takeSession();

    HelperLaunch(HelperLaunch&& other) noexcept;
    HelperLaunch& operator=(HelperLaunch&& other) = delete;
    ~HelperLaunch();

private:
    HelperLaunch() = default;

    posix::Descriptor m_socket;
    posix::Descriptor m_messages;
    posix::Descriptor m_exitWatch;
    pid_t m_child = -1;
    wire::Decoder m_decoder;
    Progress m_progress = Progress::waiting;
};

}  // namespace platform::rights
