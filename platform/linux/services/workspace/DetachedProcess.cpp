#include "platform/linux/services/workspace/DetachedProcess.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <string_view>

#include "platform/posix/ArgumentPointers.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/PathParts.h"

namespace platform::linux_host {

namespace {

// Between fork and exec only calls that are safe after a fork of a process with several threads.
[[noreturn]] void becomeProgram(const char* path, char* const* arguments, int report) {
    const int null = ::open("/dev/null", O_RDWR);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        (void)::dup2(null, stream);
    }
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    for (int signal = 1; signal < NSIG; ++signal) {
        (void)::signal(signal, SIG_DFL);
    }
    (void)::execv(path, arguments);
    const int code = errno;
    (void)!::write(report, &code, sizeof code);
    ::_exit(127);
}

bool isProgram(const std::string& path) {
    struct stat status {};
    return ::access(path.c_str(), X_OK) == 0 && ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

// The errno that kept the program from starting; 0 when the pipe was closed by its start.
int reportedCode(int report) {
    int code = 0;
    while (::read(report, &code, sizeof code) < 0 && errno == EINTR) {
    }
    return code;
}

}  // namespace

std::optional<std::string> findProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) {
        return isProgram(name) ? std::optional(name) : std::nullopt;
    }
    const char* variable = std::getenv("PATH");
    std::string_view folders = variable != nullptr ? variable : "/usr/local/bin:/usr/bin:/bin";
    while (!folders.empty() && !name.empty()) {
        const auto end = std::min(folders.find(':'), folders.size());
        const std::string path = posix::joinPath(std::string(folders.substr(0, end)), name);
        if (path.starts_with('/') && isProgram(path)) {
            return path;
        }
        folders.remove_prefix(std::min(end + 1, folders.size()));
    }
    return std::nullopt;
}

bool startDetached(const std::vector<std::string>& command) {
    const auto program = command.empty() ? std::nullopt : findProgram(command.front());
    std::array<int, 2> ends{-1, -1};
    if (!program || ::pipe2(ends.data(), O_CLOEXEC) != 0) {
        return false;
    }
    const posix::Descriptor readEnd(ends[0]);
    posix::Descriptor writeEnd(ends[1]);
    const auto holdsNul = [](const std::string& word) { return word.find('\0') != std::string::npos; };
    if (std::any_of(command.begin(), command.end(), holdsNul)) {
        return false;  // the system would cut the word short
    }
    const auto arguments = posix::pointersTo(command);
    const pid_t child = ::fork();
    if (child == 0) {
        ::setsid();
        const pid_t grandchild = ::fork();
        if (grandchild == 0) {
            becomeProgram(program->c_str(), arguments.data(), writeEnd.get());
        }
        ::_exit(grandchild < 0 ? 1 : 0);
    }
    writeEnd.reset();
    int status = 0;
    while (child > 0 && ::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return child > 0 && status == 0 && reportedCode(readEnd.get()) == 0;
}

}  // namespace platform::linux_host
