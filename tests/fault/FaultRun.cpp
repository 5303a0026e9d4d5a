#include "tests/fault/FaultRun.h"
#include "platform/posix/ArgumentPointers.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "tests/fakes/TemporaryFolder.h"

namespace fault {

namespace {

constexpr int mostCalls = 1000;

std::string readText(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::string> environment(const Fault& fault, const std::string& report) {
    std::vector<std::string> variables{"PATH=/usr/bin:/bin"};
    if (fault.at > 0) {
        variables.push_back("LD_PRELOAD=" FAULT_LIBRARY);
        variables.push_back("FAULT_AT=" + std::to_string(fault.at));
        variables.push_back("FAULT_REPORT=" + report);
        variables.push_back(fault.error == 0 ? "FAULT_KILL=1" : "FAULT_ERRNO=" + std::to_string(fault.error));
    }
    return variables;
}

}  // namespace

std::optional<std::string> obstacle() {
#ifdef FAULT_SANITIZED
    return "a sanitizer's library has to be loaded before the one that injects faults";
#else
    return std::nullopt;
#endif
}

Outcome run(const std::vector<std::string>& words, const Fault& fault) {
    const fakes::TemporaryFolder folder;
    const std::string report = folder / "report";
    std::ofstream(report).close();
    std::vector<std::string> command{FAULT_DRIVER};
    command.insert(command.end(), words.begin(), words.end());
    std::vector<std::string> variables = environment(fault, report);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, (folder / "errors").c_str(), O_WRONLY | O_CREAT, 0600);
    pid_t child = 0;
    const int refused =
        ::posix_spawn(&child, FAULT_DRIVER, &actions, nullptr, platform::posix::pointersTo(command).data(),
                      platform::posix::pointersTo(variables).data());
    ::posix_spawn_file_actions_destroy(&actions);
    if (refused != 0) {
        ADD_FAILURE() << "the driver does not start: " << refused;
        return {};
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    Outcome outcome;
    outcome.call = readText(report);
    outcome.reached = !outcome.call.empty();
    outcome.killed = WIFSIGNALED(status);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    EXPECT_TRUE(outcome.killed || outcome.status == 0 || outcome.status == 1) << "status " << status;
    return outcome;
}

int runEveryFault(const Scenario& scenario) {
    int reached = 0;
    for (const int error : {EACCES, ENOSPC, EIO, EXDEV, 0}) {
        for (int at = 1; at <= mostCalls; ++at) {
            const auto words = scenario.prepare();
            const Outcome outcome = run(words, {at, error});
            SCOPED_TRACE("call " + std::to_string(at) + " (" + outcome.call + "), error " + std::to_string(error));
            if (!outcome.reached) {
                EXPECT_EQ(outcome.status, 0) << "without a fault it works";
                break;
            }
            ++reached;
            scenario.check(outcome);
            const Outcome second = run(words, {});
            scenario.checkSecond(outcome, second);
            if (testing::Test::HasFailure()) {
                return reached;
            }
        }
    }
    return reached;
}

}  // namespace fault
