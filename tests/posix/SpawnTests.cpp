#include "platform/posix/Spawn.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <cstdio>

#include "platform/posix/Pipe.h"
#include "platform/posix/ProcessLauncher.h"
#include "tests/posix/ScriptFile.h"

namespace {

using platform::Process;
using platform::ProcessOptions;
using platform::posix::Descriptor;

using Environment = std::map<std::string, std::string>;

struct Result {
    platform::Failure failure;
    std::string output;
    int status = 0;
};

Result run(ProcessOptions options) {
    options.output = ProcessOptions::Output::pipe;
    const auto process = platform::posix::ProcessLauncher().make(std::move(options));
    Result result{process->launch(), {}, 0};
    if (!result.failure) {
        std::string error;
        while (process->readAvailable(result.output, error, std::nullopt) != Process::Chunk::endOfStreams) {
        }
        process->waitUntilExit();
        result.status = process->terminationStatus();
    }
    return result;
}

Result run(const std::string& path, std::vector<std::string> arguments = {}) {
    ProcessOptions options;
    options.path = path;
    options.arguments = std::move(arguments);
    return run(options);
}

TEST(Spawning, PassesArgumentsAsTheyStand) {
    EXPECT_EQ(run("/usr/bin/printf", {"[%s]", "a b", "", "*", "\xff\n"}).output, "[a b][][*][\xff\n]");
}

TEST(Spawning, TellsTheToolItsPath) { EXPECT_EQ(run("/bin/bash", {"-c", "echo $0"}).output, "/bin/bash\n"); }

TEST(Spawning, KeepsTheEnvironmentWhenNoneIsGiven) {
    ::setenv("WICKFIELD_TEST_VARIABLE", "kept", 1);
    EXPECT_EQ(run("/usr/bin/printenv", {"WICKFIELD_TEST_VARIABLE"}).output, "kept\n");
    ::unsetenv("WICKFIELD_TEST_VARIABLE");
}

TEST(Spawning, ReplacesTheWholeEnvironment) {
    ProcessOptions options;
    options.path = "/usr/bin/env";
    options.environment = Environment{{"ONE", "1"}, {"TWO", "a=b"}};
    EXPECT_EQ(run(options).output, "ONE=1\nTWO=a=b\n");
}

TEST(Spawning, AnEmptyEnvironmentIsEmpty) {
    ProcessOptions options;
    options.path = "/usr/bin/env";
    options.environment.emplace();
    EXPECT_EQ(run(options).output, "");
}

TEST(Spawning, GivesNoDescriptorButTheStreams) {
    const Descriptor inheritable(::open("/dev/null", O_RDONLY));  // NOLINT(android-cloexec-open): that is the point
    EXPECT_EQ(run("/bin/bash", {"-c", "for n in {0..99}; do [[ -e /proc/$$/fd/$n ]] && echo -n $n,; done"}).output,
              "0,1,2,");
}

TEST(Spawning, GivesDefaultDispositionsAndAnEmptyMask) {
    const auto pipeBefore = ::signal(SIGPIPE, SIG_IGN);
    const auto usrBefore = ::signal(SIGUSR1, SIG_IGN);
    sigset_t all;
    sigset_t maskBefore;
    sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &maskBefore);
    const auto result = run("/bin/grep", {"-E", "^Sig(Blk|Ign)", "/proc/self/status"});
    ::pthread_sigmask(SIG_SETMASK, &maskBefore, nullptr);
    ::signal(SIGPIPE, pipeBefore);
    ::signal(SIGUSR1, usrBefore);
    unsigned long long blocked = ~0ULL;
    unsigned long long ignored = ~0ULL;
    ASSERT_EQ(std::sscanf(result.output.c_str(), "SigBlk: %llx SigIgn: %llx", &blocked, &ignored), 2) << result.output;
    constexpr unsigned long long ofTheThreadLibrary = 3ULL << 31U;  // 32 and 33, which no program can use
    EXPECT_EQ(blocked, 0U);
    EXPECT_EQ(ignored & ~ofTheThreadLibrary, 0U);
}

TEST(Spawning, AMissingToolIsAFailureThatNamesIt) {
    const auto failure = run("/no/such/tool").failure;
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, ENOENT);
    EXPECT_EQ(failure->description, "launch path not accessible: /no/such/tool (No such file or directory)");
}

TEST(Spawning, AnEmptyPathIsAFailure) { EXPECT_TRUE(run("").failure); }

TEST(Spawning, AFolderIsAFailure) {
    const auto failure = run("/usr").failure;
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, EACCES);
}

TEST(Spawning, AFileWithoutTheExecutableBitIsAFailure) {
    const ScriptFile script("#!/bin/bash\nexit 0\n", 0644);
    const auto failure = run(script.path()).failure;
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, EACCES);
}

TEST(Spawning, AScriptRunsByItsInterpreter) {
    const ScriptFile script("#!/bin/bash\necho \"$1\"; exit 5\n");
    const auto result = run(script.path(), {"argument"});
    EXPECT_EQ(result.output, "argument\n");
    EXPECT_EQ(result.status, 5);
}

TEST(Spawning, AMissingInterpreterIsAFailureThatSaysSo) {
    const ScriptFile script("#!/no/such/interpreter\n");
    const auto failure = run(script.path()).failure;
    ASSERT_TRUE(failure);
    EXPECT_NE(failure->description.find("interpreter"), std::string::npos) << failure->description;
}

TEST(Spawning, AnInterpreterLineWithACarriageReturnNamesNoInterpreter) {
    const ScriptFile script("#!/bin/bash\r\nexit 0\r\n");
    const auto failure = run(script.path()).failure;
    ASSERT_TRUE(failure);
    EXPECT_NE(failure->description.find("interpreter"), std::string::npos) << failure->description;
}

TEST(Spawning, AFileThatIsNoProgramIsAFailureThatSaysSo) {
    const ScriptFile script("just words\n");
    const auto failure = run(script.path()).failure;
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, ENOEXEC);
}

TEST(Spawning, AnEmptyFileIsAFailure) { EXPECT_TRUE(run(ScriptFile("").path()).failure); }

TEST(Spawning, TooLongArgumentsAreAFailure) {
    const auto failure = run("/bin/true", {std::string(std::size_t{64} * 1024 * 1024, 'x')}).failure;
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, E2BIG);
}

TEST(Spawning, WhatWouldBeCutShortIsRefused) {
    const std::string withNul("a\0b", 3);
    EXPECT_TRUE(run("/bin/true", {withNul}).failure);
    EXPECT_TRUE(run(std::string("/bin/true\0x", 11)).failure);
    ProcessOptions options;
    options.path = "/bin/true";
    options.environment = Environment{{"NAME", withNul}};
    EXPECT_TRUE(run(options).failure);
}

TEST(Spawning, AnEnvironmentNameWithAnEqualsSignIsRefused) {
    ProcessOptions options;
    options.path = "/bin/true";
    options.environment = Environment{{"A=B", "c"}};
    EXPECT_TRUE(run(options).failure);
}

TEST(Spawning, StreamsReachTheToolWhenTheProgramHasNone) {
    const Descriptor keptInput(::fcntl(0, F_DUPFD_CLOEXEC, 10));
    const Descriptor keptOutput(::fcntl(1, F_DUPFD_CLOEXEC, 10));
    const Descriptor keptError(::fcntl(2, F_DUPFD_CLOEXEC, 10));
    ::close(0);
    ::close(1);
    ::close(2);
    ProcessOptions options;
    options.path = "/bin/bash";
    options.arguments = {"-c", "echo out; read line && echo got; echo error >&2"};
    options.error = ProcessOptions::Output::null;
    const auto result = run(options);
    ::dup2(keptInput.get(), 0);
    ::dup2(keptOutput.get(), 1);
    ::dup2(keptError.get(), 2);
    EXPECT_EQ(result.output, "out\n");
}

}  // namespace
