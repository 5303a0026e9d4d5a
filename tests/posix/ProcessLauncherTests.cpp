#include "platform/posix/ProcessLauncher.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>

#include "tests/posix/ScriptFile.h"

namespace {

using platform::posix::ProcessLauncher;

TEST(LocatingATool, PrefersTheOneThatComesWithTheProgramToTheSystems) {
    const ScriptFile shipped("#!/bin/bash\n");
    std::filesystem::rename(shipped.path(), shipped.beside("true"));
    ProcessLauncher launcher(std::filesystem::path(shipped.path()).parent_path());
    EXPECT_EQ(launcher.locateTool("/bin/true"), shipped.beside("true"));
    EXPECT_EQ(launcher.locateTool("/bin/false"), "/bin/false");
}

TEST(LocatingATool, LeavesAnExistingOneThatIsNotTheSystems) {
    const ScriptFile shipped("#!/bin/bash\n");
    const ScriptFile own("#!/bin/bash\n");  // of the same name
    ProcessLauncher launcher(std::filesystem::path(shipped.path()).parent_path());
    EXPECT_EQ(launcher.locateTool(own.path()), own.path());
}

TEST(LocatingATool, FindsTheOneThatComesWithTheProgram) {
    const ScriptFile shipped("#!/bin/bash\n");
    ProcessLauncher launcher(std::filesystem::path(shipped.path()).parent_path());
    EXPECT_EQ(launcher.locateTool("/no/such/folder/script"), shipped.path());
}

TEST(LocatingATool, LeavesThePathOfOneThatIsNowhere) {
    ProcessLauncher launcher("/no/such/folder");
    EXPECT_EQ(launcher.locateTool("/usr/bin/no-such-tool"), "/usr/bin/no-such-tool");
}

TEST(LocatingATool, LeavesRelativeAndOddPaths) {
    const ScriptFile shipped("#!/bin/bash\n");
    ProcessLauncher launcher(std::filesystem::path(shipped.path()).parent_path());
    EXPECT_EQ(launcher.locateTool("script"), "script");
    EXPECT_EQ(launcher.locateTool(""), "");
    EXPECT_EQ(launcher.locateTool("/no/such/"), "/no/such/");
}

TEST(LocatingATool, IgnoresAShippedFileThatIsNotExecutable) {
    const ScriptFile shipped("text", 0644);
    ProcessLauncher launcher(std::filesystem::path(shipped.path()).parent_path());
    EXPECT_EQ(launcher.locateTool("/no/such/folder/script"), "/no/such/folder/script");
}

TEST(ProcessLauncher, SeesExitStatusesThoughTheProgramWasStartedWithChildSignalsIgnored) {
    ::signal(SIGCHLD, SIG_IGN);
    ProcessLauncher launcher;
    platform::ProcessOptions options;
    options.path = "/bin/false";
    const auto process = launcher.make(options);
    ASSERT_FALSE(process->launch());
    process->waitUntilExit();
    EXPECT_EQ(process->terminationStatus(), 1);
}

TEST(ProcessLauncher, MayGoBeforeItsProcesses) {
    platform::ProcessOptions options;
    options.path = "/bin/true";
    const auto process = ProcessLauncher().make(options);
    EXPECT_FALSE(process->launch());
    EXPECT_TRUE(process->waitUntilExit(std::chrono::seconds{10}));
}

}  // namespace
