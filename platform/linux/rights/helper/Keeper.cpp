#include "platform/linux/rights/helper/Keeper.h"

#include <spawn.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <string_view>

#include "platform/linux/rights/helper/CleanProcess.h"
#include "platform/linux/rights/wire/HelperPath.h"
#include "platform/posix/ArgumentPointers.h"

namespace platform::rights {

namespace {

constexpr int notStarted = 127;
constexpr int killed = 128;

void nameHelper(std::vector<std::string>& command) {
    const std::string path = "/proc/" + std::to_string(::getpid()) + "/exe";
    constexpr std::string_view meant = wire::helperPath;
    for (auto& argument : command) {
        if (const auto place = argument.find(meant); place != std::string::npos) {
            argument.replace(place, meant.size(), path);
        }
    }
}

}  // namespace

int keepHelperFor(std::vector<std::string> command) {
    ::prctl(PR_SET_DUMPABLE, 0);
    closeDescriptorsFrom(STDERR_FILENO + 1);
    nameHelper(command);
    const auto arguments = posix::pointersTo(command);
    pid_t child = -1;
    if (::posix_spawn(&child, arguments.front(), nullptr, nullptr, arguments.data(), environ) != 0) {
        return notStarted;
    }
    closeDescriptorsFrom(STDIN_FILENO);
    int status = 0;
    while (::waitpid(child, &status, 0) != child) {
        if (errno != EINTR) {
            return notStarted;
        }
    }
    return WIFSIGNALED(status) ? killed + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace platform::rights
