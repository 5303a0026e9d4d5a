#include "lib/KZTaskEx.h"

#include <csignal>
#include <thread>

#include "tests/lib/TaskFixture.h"

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

class RunningATool : public TaskFixture {};

TEST_F(RunningATool, SucceedsWhateverItsExitStatus) {
    EXPECT_TRUE(KZTaskEx::runTask("/bin/false", {}));
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(RunningATool, WaitsUntilItHasEnded) {
    EXPECT_TRUE(KZTaskEx::runTask("/bin/bash", script("sleep 0.1; echo done > '" + disk.path() + "/done'")));
    EXPECT_EQ(read(disk / "done"), "done\n");
}

TEST_F(RunningATool, DropsWhatItPrints) {
    auto& tools = pretendTools();
    KZTaskEx::runTask("/bin/true", {"a", "b"});
    const auto& options = tools.made().at(0)->options();
    EXPECT_EQ(options.output, platform::ProcessOptions::Output::null);
    EXPECT_EQ(options.error, platform::ProcessOptions::Output::null);
    EXPECT_THAT(options.arguments, ElementsAre("a", "b"));
    EXPECT_FALSE(options.environment);
}

TEST_F(RunningATool, RefusesOneThatIsMissing) {
    EXPECT_FALSE(KZTaskEx::runTask("/no/such/tool", {}));
    EXPECT_THAT(newLogEntries(), ElementsAre("Error: /no/such/tool is not executable"));
    EXPECT_EQ(newPrint(), "Error: /no/such/tool is not executable\n");
}

TEST_F(RunningATool, RefusesOneThatIsNotExecutable) {
    const auto file = add("file", "#!/bin/bash\n", false);
    EXPECT_FALSE(KZTaskEx::runTask(file, {}));
    EXPECT_THAT(newLogEntries(), ElementsAre("Error: " + file + " is not executable"));
}

TEST_F(RunningATool, RefusesAnApplicationBundle) {
    std::filesystem::create_directories(disk / "Some.app/Contents");
    workspace.packages.insert(disk / "Some.app");
    EXPECT_FALSE(KZTaskEx::runTask(disk / "Some.app", {}));
    EXPECT_THAT(newLogEntries(), ElementsAre("Error: " + disk.path() + "/Some.app is not executable"));
}

TEST_F(RunningATool, OnlyLogsWhenItCannotBeStarted) {
    const auto file = add("file", "#!/no/such/interpreter\n");
    EXPECT_FALSE(KZTaskEx::runTask(file, {}));
    EXPECT_THAT(newLogEntries(), ElementsAre(StartsWith("Exception running task " + file + ": ")));
    EXPECT_EQ(newPrint(), "");
}

TEST_F(RunningATool, StartsARelativePathUnchecked) {
    auto& tools = pretendTools();
    workspace.packages.insert("tool");
    EXPECT_TRUE(KZTaskEx::runTask("tool", {}));
    EXPECT_EQ(tools.made().at(0)->options().path, "tool");
}

TEST_F(RunningATool, ReportsARelativePathThatLeadsNowhereAsAnException) {
    EXPECT_FALSE(KZTaskEx::runTask("no-such-tool", {}));
    EXPECT_THAT(newLogEntries(), ElementsAre(StartsWith("Exception running task no-such-tool: ")));
    EXPECT_FALSE(KZTaskEx::runTask("", {}));
    EXPECT_THAT(newLogEntries(), ElementsAre(StartsWith("Exception running task : ")));
}

TEST_F(RunningATool, TakesTheOneThatTheHostKeepsElsewhere) {
    auto& tools = pretendTools();
    tools.places["/usr/bin/no-such-tool"] = "/bin/true";
    EXPECT_TRUE(KZTaskEx::runTask("/usr/bin/no-such-tool", {}));
    EXPECT_EQ(tools.made().at(0)->options().path, "/bin/true");
}

TEST_F(RunningATool, HandsOutTheTaskBeforeTheLaunch) {
    auto& tools = pretendTools();
    KZTaskEx::TaskRef task;
    bool seen = false;
    tools.tools["/bin/true"].whenLaunched = [&] { seen = task.get() != nullptr; };
    KZTaskEx::runTask("/bin/true", {}, &task);
    EXPECT_TRUE(seen);
}

TEST_F(RunningATool, CanBeEndedByAnotherThread) {
    KZTaskEx::TaskRef task;
    std::jthread other([&task] {
        while (!task.get() || !task.get()->isRunning()) {
            std::this_thread::sleep_for(1ms);
        }
        task.get()->terminate();
    });
    const auto start = Clock::now();
    EXPECT_TRUE(KZTaskEx::runTask("/bin/sleep", {"60"}, &task));
    EXPECT_LT(Clock::now() - start, 30s);
    EXPECT_TRUE(task.get()->endedBySignal());
}

class RunningAToolAndReturning : public TaskFixture {};

TEST_F(RunningAToolAndReturning, DoesNotWait) {
    const auto start = Clock::now();
    KZTaskEx::runTaskAndReturn("/bin/bash", script("sleep 1; echo done > '" + disk.path() + "/done'"));
    EXPECT_LT(Clock::now() - start, 900ms);
    EXPECT_TRUE(appearsWithin(disk / "done", 10s));
}

TEST_F(RunningAToolAndReturning, RefusesOneThatIsMissing) {
    KZTaskEx::runTaskAndReturn("/no/such/tool", {});
    EXPECT_THAT(newLogEntries(), ElementsAre("Error: /no/such/tool is not executable"));
}

TEST_F(RunningAToolAndReturning, RefusesAPackage) {
    workspace.packages.insert(disk.path());
    KZTaskEx::runTaskAndReturn(disk.path(), {});
    EXPECT_THAT(newLogEntries(), ElementsAre("Error: " + disk.path() + " is not executable"));
}

TEST_F(RunningAToolAndReturning, PrintsWhyItCannotBeStarted) {
    const auto file = add("file", "text", false);
    KZTaskEx::runTaskAndReturn(file, {});
    EXPECT_THAT(newLogEntries(), ElementsAre(StartsWith("Exception running task " + file + ": ")));
    EXPECT_THAT(newPrint(), StartsWith("Exception running task "));
}

class TerminationCode : public TaskFixture {};

TEST_F(TerminationCode, IsTheExitStatus) {
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/true", {}), 0);
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/bash", script("exit 37")), 37);
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/bash", script("exit -1")), 255);
}

TEST_F(TerminationCode, IsTheSignalThatEndedTheTool) {
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/bash", script("kill -KILL $$")), SIGKILL);
}

TEST_F(TerminationCode, IsMinusOneForAMissingTool) {
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/no/such/tool", {}), -1);
    EXPECT_THAT(newLogEntries(), ElementsAre("Error: /no/such/tool is not executable"));
    EXPECT_EQ(newPrint(), "Error: /no/such/tool is not executable\n");
}

TEST_F(TerminationCode, IsMinusOneForAPackage) {
    workspace.packages.insert("/bin/true");
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/true", {}), -1);
}

TEST_F(TerminationCode, IsMinusOneForAFileThatPassesTheCheckAndCannotBeStarted) {
    const auto file = add("file", "#!/bin/bash\n", false);
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask(file, {}), -1);
    EXPECT_THAT(newLogEntries(), ElementsAre(StartsWith("Exception running task " + file + ": ")));
}

TEST_F(TerminationCode, HandsOutTheTaskBeforeTheLaunch) {
    auto& tools = pretendTools();
    KZTaskEx::TaskRef task;
    bool seen = false;
    tools.tools["/bin/true"].whenLaunched = [&] { seen = task.get() != nullptr; };
    KZTaskEx::terminationCodeFromTask("/bin/true", {}, &task);
    EXPECT_TRUE(seen);
}

class AScript : public TaskFixture {};

TEST_F(AScript, RunsByItsInterpreterWithoutTheExecutableBit) {
    const auto file = add("postinstall.sh", "#!/bin/bash\n[[ $1 == bundle ]] && exit 5\n", false);
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/bash", {file, "bundle"}, Seconds{60.0}), 5);
}

TEST_F(AScript, KilledByASignalFails) {
    const auto file = add("script.sh", "kill -TERM $$\n", false);
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/bash", {file}, Seconds{60.0}), SIGTERM);
}

TEST_F(AScript, WithCarriageReturnsFailsByItsInterpretersOwnWord) {
    const auto file = add("script.sh", "set -e\r\ncd /no\r\nexit 0\r\n", false);
    EXPECT_GT(KZTaskEx::terminationCodeFromTask("/bin/bash", {file}, Seconds{60.0}), 0);
}

TEST_F(AScript, ThatIsEmptySucceeds) {
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/bin/bash", {add("script.sh", "")}, Seconds{60.0}), 0);
}

TEST_F(AScript, ForAnInterpreterThatTheHostLacksGivesMinusOneAndALine) {
    const auto file = add("script.scpt", "display dialog\n", false);
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask("/no/such/osascript", {file}, Seconds{60.0}), -1);
    EXPECT_THAT(newLogEntries(), ElementsAre("Error: /no/such/osascript is not executable"));
}

TEST_F(AScript, WhoseFirstLineNamesAMissingInterpreterGivesMinusOneAndALine) {
    const auto file = add("script", "#!/no/such/interpreter\n");
    EXPECT_EQ(KZTaskEx::terminationCodeFromTask(file, {}, Seconds{60.0}), -1);
    EXPECT_THAT(newLogEntries(), ElementsAre(HasSubstr("interpreter")));
}

}  // namespace
