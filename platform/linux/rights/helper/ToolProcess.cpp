#include "platform/linux/rights/helper/ToolProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

#include "platform/linux/rights/helper/Confinement.h"
#include "platform/posix/ArgumentPointers.h"

namespace platform::rights {

namespace {

// Everything the child does is made ready before it starts: it works in its parent's memory.
struct Child {
    const char* path;
    char* const* arguments;
    const Confinement* confinement;
    int output;
    volatile int error = 0;
};

// Signals that are handled already have their default action in the tool.
void restoreSignals() {
    ::signal(SIGPIPE, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

int setStandardStreams(int output) {
    const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    output = output >= 0 ? output : nowhere;
    const bool areSet = nowhere >= 0 && ::dup2(nowhere, STDIN_FILENO) >= 0 && ::dup2(output, STDOUT_FILENO) >= 0 &&
                        ::dup2(output, STDERR_FILENO) >= 0;
    return areSet ? 0 : errno;
}

// The streams have paths too, in /proc: they are opened in the view that the tool has.
int prepareForTool(const Child& child) {
    int error = child.confinement != nullptr ? enterView(*child.confinement) : 0;
    if (error == 0) {
        error = setStandardStreams(child.output);
    }
    if (error == 0 && child.confinement != nullptr) {
        error = enterConfinement(*child.confinement);
    }
    return error;
}

[[noreturn]] void runChild(Child& child) {
    ::setpgid(0, 0);
    int error = prepareForTool(child);
    if (error == 0) {
        restoreSignals();
        ::execv(child.path, child.arguments);
        error = errno;
    }
    child.error = error;
    ::_exit(127);
}

// The helper does not get the processor back before the tool has taken over, so its memory is not copied at all.
[[gnu::noinline]] pid_t startChild(Child& child) {
    const pid_t started = ::vfork();
    if (started == 0) {
        runChild(child);
    }
    return started;
}

}  // namespace

ToolStart startTool(const std::vector<std::string>& command, int output) {
    if (command.empty() || !command.front().starts_with('/')) {
        return {.error = EINVAL};
    }
    const auto confinement = confinementFor(command);
    if (const int* refused = std::get_if<int>(&confinement)) {
        return {.error = *refused};
    }
    const auto& confined = std::get<std::optional<Confinement>>(confinement);
    const auto arguments = posix::pointersTo(command);
    Child child{.path = command.front().c_str(),
                .arguments = arguments.data(),
                .confinement = confined ? &*confined : nullptr,
                .output = output};
    const pid_t started = startChild(child);
    if (started < 0) {
        return {.error = errno};
    }
    if (child.error == 0) {
        return {.tool = started};
    }
    ::waitpid(started, nullptr, 0);
    return {.error = child.error};
}

}  // namespace platform::rights
