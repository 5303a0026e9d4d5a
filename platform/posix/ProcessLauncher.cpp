#include "platform/posix/ProcessLauncher.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "platform/posix/ChildProcess.h"
#include "platform/posix/Pipe.h"

namespace platform::posix {

namespace {

std::shared_ptr<const Descriptor> openNullDevice() {
    return std::make_shared<const Descriptor>(
        aboveStandardStreams(Descriptor(::open("/dev/null", O_RDWR | O_CLOEXEC))));
}

void restoreChildSignal() {
    struct sigaction action {};
    if (::sigaction(SIGCHLD, nullptr, &action) == 0 &&
        (action.sa_handler == SIG_IGN || (action.sa_flags & SA_NOCLDWAIT) != 0)) {
        action.sa_flags &= ~SA_NOCLDWAIT;
        if (action.sa_handler == SIG_IGN) {
            action.sa_handler = SIG_DFL;
        }
        ::sigaction(SIGCHLD, &action, nullptr);
    }
}

}  // namespace

ProcessLauncher::ProcessLauncher(ShippedTools shippedTools)
    : m_shippedTools(std::move(shippedTools)), m_nullDevice(openNullDevice()) {
    restoreChildSignal();
}

std::shared_ptr<Process> ProcessLauncher::make(ProcessOptions options) {
    return std::make_shared<ChildProcess>(std::move(options), m_nullDevice);
}

std::string ProcessLauncher::locateTool(const std::string& path) {
    if (std::ranges::find(m_shippedTools.paths, path) == m_shippedTools.paths.end()) {
        return path;
    }
    const std::string shipped = m_shippedTools.folder + path.substr(path.rfind('/'));
    return ::access(shipped.c_str(), X_OK) == 0 ? shipped : path;
}

}  // namespace platform::posix
