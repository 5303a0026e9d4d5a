#include "platform/linux/rights/helper/ToolProcess.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <optional>

#include "platform/linux/rights/helper/Confinement.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/Pipe.h"

namespace platform::rights {

namespace {

std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const auto& text : texts) {
        pointers.push_back(const_cast<char*>(text.c_str()));
    }
    pointers.push_back(nullptr);
    return pointers;
}

// Everything the child does is made ready before the fork.
struct Child {
    const char* path;
    char* const* arguments;
    const Confinement* confinement;
    int output;
    int report;  // closes by itself when the tool takes over
};

void restoreSignals() {
    for (int number = 1; number < NSIG; ++number) {
        ::signal(number, SIG_DFL);
    }
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

[[noreturn]] void runChild(const Child& child) {
    ::setpgid(0, 0);
    restoreSignals();
    const int nowhere = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    const int output = child.output >= 0 ? child.output : nowhere;
    int error = 0;
    if (nowhere < 0 || ::dup2(nowhere, STDIN_FILENO) < 0 || ::dup2(output, STDOUT_FILENO) < 0 ||
        ::dup2(output, STDERR_FILENO) < 0) {
        error = errno;
    } else if (child.confinement != nullptr) {
        error = enterConfinement(*child.confinement);
    }
    if (error == 0) {
        ::execv(child.path, child.arguments);
        error = errno;
    }
    static_cast<void>(::write(child.report, &error, sizeof error));
    ::_exit(127);
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
    auto report = posix::makePipe();
    if (!report) {
        return {.error = errno};
    }
    const auto arguments = pointersTo(command);
    const Child child{.path = command.front().c_str(),
                      .arguments = arguments.data(),
                      .confinement = confined ? &*confined : nullptr,
                      .output = output,
                      .report = report->writeEnd.get()};
    const pid_t started = ::fork();
    if (started < 0) {
        return {.error = errno};
    }
    if (started == 0) {
        runChild(child);
    }
    report->writeEnd.reset();
    int error = 0;
    ssize_t got = 0;
    do {
        got = ::read(report->readEnd.get(), &error, sizeof error);
    } while (got < 0 && errno == EINTR);
    if (got == 0) {
        return {.tool = started};
    }
    ::waitpid(started, nullptr, 0);
    return {.error = got == sizeof error ? error : EIO};
}

}  // namespace platform::rights
