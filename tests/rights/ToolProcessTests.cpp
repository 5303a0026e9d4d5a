#include "platform/linux/rights/helper/ToolProcess.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <string>

#include "platform/posix/Pipe.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

using platform::rights::startTool;

int waitFor(pid_t tool) {
    int status = -1;
    ::waitpid(tool, &status, 0);
    return status;
}

TEST(StartingATool, RunsItWithItsArgumentsAsTheyAre) {
    auto pipe = platform::posix::makePipe();
    const auto started = startTool({"/usr/bin/printf", "%s|", "a b", "$HOME", "", "*", "-n"}, pipe->writeEnd.get());
    pipe->writeEnd.reset();
    std::array<char, 64> text{};
    EXPECT_EQ(::read(pipe->readEnd.get(), text.data(), text.size()), 16);
    EXPECT_STREQ(text.data(), "a b|$HOME||*|-n|");
    EXPECT_EQ(waitFor(started.tool), 0);
}

TEST(StartingATool, LooksNothingUp) {
    for (const char* path : {"true", "./true", "bin/true", ""}) {
        EXPECT_EQ(startTool({path}, -1).error, EINVAL) << path;
    }
    EXPECT_EQ(startTool({}, -1).error, EINVAL);
}

TEST(StartingATool, SaysWhyItCannotBeExecuted) {
    EXPECT_EQ(startTool({"/no/such/tool"}, -1).error, ENOENT);
    EXPECT_EQ(startTool({"/etc/passwd"}, -1).error, EACCES);
    EXPECT_EQ(startTool({"/etc"}, -1).error, EACCES);
}

TEST(StartingATool, RefusesAFileThatIsNoProgram) {
    const fakes::TemporaryFolder folder;
    std::ofstream(folder / "tool") << "neither a program nor a script";
    ASSERT_EQ(::chmod((folder / "tool").c_str(), 0700), 0);
    EXPECT_EQ(startTool({folder / "tool"}, -1).error, ENOEXEC);
}

TEST(StartingATool, LeavesNoChildBehindWhenThatFails) {
    const pid_t starter = ::fork();  // which has no other children
    if (starter == 0) {
        startTool({"/no/such/tool"}, -1);
        ::_exit(::waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD ? 0 : 1);
    }
    EXPECT_EQ(waitFor(starter), 0);
}

TEST(StartingATool, GivesItAProcessGroupOfItsOwn) {
    const auto started = startTool({"/bin/sleep", "60"}, -1);
    EXPECT_EQ(::getpgid(started.tool), started.tool);
    ::kill(-started.tool, SIGKILL);
    waitFor(started.tool);
}

}  // namespace
