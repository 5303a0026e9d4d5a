#include "platform/posix/ProcessLauncher.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <filesystem>

#include "tests/posix/ScriptFile.h"

namespace {

using platform::posix::ProcessLauncher;

TEST(LocatingATool, FindsTheOneThatComesWithTheProgramInPlaceOfTheSystems) {
    const ScriptFile shipped("#!/bin/bash\n");
    std::filesystem::rename(shipped.path(), shipped.beside("true"));
    ProcessLauncher launcher({.folder = std::filesystem::path(shipped.path()).parent_path(), .paths = {"/bin/true"}});
    EXPECT_EQ(launcher.locateTool("/bin/true"), shipped.beside("true"));
}

TEST(LocatingATool, FindsTheOneThatComesWithTheProgramWhereTheSystemHasNone) {
    const ScriptFile shipped("#!/bin/bash\n");
    ProcessLauncher launcher(
        {.folder = std::filesystem::path(shipped.path()).parent_path(), .paths = {"/no/such/folder/script"}});
    EXPECT_EQ(launcher.locateTool("/no/such/folder/script"), shipped.path());
}

TEST(LocatingATool, IsNotMisledByAFileLaidBesideTheShippedTools) {
    const ScriptFile planted("#!/bin/bash\n");
    std::filesystem::rename(planted.path(), planted.beside("true"));
    ProcessLauncher launcher({.folder = std::filesystem::path(planted.path()).parent_path(), .paths = {"/bin/false"}});
    EXPECT_EQ(launcher.locateTool("/bin/true"), "/bin/true");
    EXPECT_EQ(launcher.locateTool("/no/such/folder/true"), "/no/such/folder/true");
}

TEST(LocatingATool, LeavesThePathWhenTheShippedToolIsMissing) {
    ProcessLauncher launcher({.folder = "/no/such/folder", .paths = {"/usr/bin/ditto"}});
    EXPECT_EQ(launcher.locateTool("/usr/bin/ditto"), "/usr/bin/ditto");
}

TEST(LocatingATool, LeavesRelativeAndOddPaths) {
    ProcessLauncher launcher({.folder = "/bin", .paths = {"/usr/bin/ditto"}});
    EXPECT_EQ(launcher.locateTool("script"), "script");
    EXPECT_EQ(launcher.locateTool(""), "");
    EXPECT_EQ(launcher.locateTool("/no/such/"), "/no/such/");
}

TEST(LocatingATool, IgnoresAShippedFileThatIsNotExecutable) {
    const ScriptFile shipped("text", 0644);
    ProcessLauncher launcher(
        {.folder = std::filesystem::path(shipped.path()).parent_path(), .paths = {"/no/such/folder/script"}});
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
