// For tests that run the tools of file commands as the helper does.
#pragma once

#include <sys/stat.h>
#include <sys/wait.h>

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/linux/rights/helper/Confinement.h"
#include "platform/linux/rights/helper/ToolProcess.h"
#include "tests/rights/RootsFolder.h"

namespace tests {

using Command = std::vector<std::string>;

class FileCommands : public RootsFolder {
protected:
    void SetUp() override {
        RootsFolder::SetUp();
        if (!IsSkipped() && platform::rights::landlockVersion() == 0) {
            GTEST_SKIP() << "this kernel has no Landlock";
        }
    }

    // How the tool ended; the errno, negative, when it was refused.
    static int run(const Command& command) {
        const auto started = platform::rights::startTool(command, -1);
        if (started.error != 0) {
            return -started.error;
        }
        int status = 0;
        return ::waitpid(started.tool, &status, 0) == started.tool && WIFEXITED(status) ? WEXITSTATUS(status) : 255;
    }
    static Command copyOf(const std::string& from, const std::string& to) {
        return {"/bin/cp", "-f", "-p", "-R", from, to};
    }
    static int check(const Command& command, int landlock = platform::rights::landlockVersion()) {
        const auto made = platform::rights::confinementFor(command, landlock);
        const int* error = std::get_if<int>(&made);
        return error != nullptr ? -*error : 0;
    }
    static bool exists(const std::string& path) {
        struct stat ignored {};
        return ::lstat(path.c_str(), &ignored) == 0;
    }
    static struct stat statOf(const std::string& path) {
        struct stat found {};
        ::lstat(path.c_str(), &found);
        return found;
    }
};

}  // namespace tests
