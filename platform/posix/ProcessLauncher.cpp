#include "platform/posix/ProcessLauncher.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <string_view>
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

bool isSystemFolder(std::string_view folder) {
    return folder == "/bin" || folder == "/sbin" || folder == "/usr/bin" || folder == "/usr/sbin";
}

}  // namespace

ProcessLauncher::ProcessLauncher(std::string shippedTools)
    : m_shippedTools(std::move(shippedTools)), m_nullDevice(openNullDevice()) {
    restoreChildSignal();
}

std::shared_ptr<Process> ProcessLauncher::make(ProcessOptions options) {
    return std::make_shared<ChildProcess>(std::move(options), m_nullDevice);
}

std::string ProcessLauncher::locateTool(const std::string& path) {
    if (m_shippedTools.empty() || !path.starts_with('/')) {
        return path;
    }
    const auto slash = path.rfind('/');
    if (!isSystemFolder(std::string_view(path).substr(0, slash)) && ::access(path.c_str(), F_OK) == 0) {
        return path;
    }
    std::string shipped = m_shippedTools + path.substr(slash);
    if (shipped.back() == '/' || ::access(shipped.c_str(), X_OK) != 0) {
        return path;
    }
    return shipped;
}

}  // namespace platform::posix
