#include "platform/posix/ProcessStart.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

namespace platform::posix {

void prepareProcess() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (::fcntl(stream, F_GETFD) < 0) {
            // The lowest free number is this one: those below it are open by now. Children are to have it too.
            static_cast<void>(::open("/dev/null", O_RDWR));  // NOLINT(android-cloexec-open)
        }
    }
    ::signal(SIGPIPE, SIG_IGN);
    ::signal(SIGXFSZ, SIG_IGN);
}

}  // namespace platform::posix
