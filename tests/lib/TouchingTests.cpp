#include <stdexcept>

#include "lib/KZFileManager/Mutations.h"
#include "tests/lib/FilesFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using Execution = fakes::FakeAuthorization::Execution;

class Touching : public FilesFixture {};

TEST_F(Touching, RunsTheToolWithoutCreatingAnything) {
    const auto file = add("file");
    const auto old = std::filesystem::file_time_type::clock::now() - std::chrono::hours{48};
    std::filesystem::last_write_time(file, old);
    EXPECT_TRUE(KZFileManager::touchFile(file));
    EXPECT_GT(std::filesystem::last_write_time(file), old + std::chrono::hours{47});
    using CommandLine = RecordingProcesses::CommandLine;
    EXPECT_THAT(processes.commands(), ElementsAre(CommandLine{.tool = "/usr/bin/touch", .arguments = {"-c", file}}));
    EXPECT_THAT(workspace.notes, ElementsAre(file));
}

TEST_F(Touching, OfNoPathIsRefusedInSilence) {
    EXPECT_FALSE(KZFileManager::touchFile(std::nullopt));
    EXPECT_FALSE(KZFileManager::touchFile(std::nullopt, SetCreationDate::yes));
    EXPECT_THAT(workspace.notes, IsEmpty());
    EXPECT_THAT(processes.commands(), IsEmpty());
}

TEST_F(Touching, OfAWritableFileSucceedsWhateverTheToolDid) {
    const auto file = add("file");
    processes.substitutes["/usr/bin/touch"] = "/bin/false";
    EXPECT_TRUE(KZFileManager::touchFile(file));
    EXPECT_THAT(workspace.notes, ElementsAre(file));
}

// The five seconds that the tool is given end nothing.
TEST_F(Touching, WaitsForAToolThatTakesLongerThanItIsGiven) {
    const auto file = add("file");
    const auto tool = add("slow touch", "#!/bin/sh\nsleep 6\nprintf touched > \"$2\"\n");
    std::filesystem::permissions(tool, std::filesystem::perms::owner_all);
    processes.substitutes["/usr/bin/touch"] = tool;
    EXPECT_TRUE(KZFileManager::touchFile(file));
    EXPECT_EQ(read(file), "touched");
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(Touching, OfAFileThatIsNotWritableAsksForRightsAndWaitsForTheTool) {
    const auto file = add("file");
    files.alwaysFail(Operation::isWritable, EACCES);
    EXPECT_TRUE(KZFileManager::touchFile(file));
    EXPECT_THAT(authorization.executions,
                ElementsAre(Execution{.tool = "/usr/bin/touch", .arguments = {"-c", file}, .drain = true}));
    authorization.executeStatus = 1;
    EXPECT_FALSE(KZFileManager::touchFile(file));
    files.fails = {};
    EXPECT_THAT(workspace.notes, ElementsAre(file, file));
}

TEST_F(Touching, OfAMissingFileMakesNoFile) {
    EXPECT_TRUE(KZFileManager::touchFile(disk / "gone"));  // the administrator's tool was started
    makeSuperuser();
    EXPECT_TRUE(KZFileManager::touchFile(disk / "gone"));
    EXPECT_FALSE(stands(disk / "gone"));
}

TEST_F(Touching, SetsTheCreationDateWhenAskedTo) {
    const auto file = add("file");
    files.forgetCalls();
    KZFileManager::touchFile(file, SetCreationDate::no);
    const auto creations = [&] {
        return std::ranges::count(files.calls(), Operation::setCreationDate, &Call::operation);
    };
    EXPECT_EQ(creations(), 0);
    KZFileManager::touchFile(file, SetCreationDate::yes);
    EXPECT_EQ(creations(), 1);
}

TEST_F(Touching, SetsTheCreationDateBeforeAskingForRights) {
    const auto file = add("file");
    files.alwaysFail(Operation::isWritable, EACCES);
    bool dated = false;
    authorization.runsTool = [&](const Execution&) {
        dated = std::ranges::count(files.calls(), Operation::setCreationDate, &Call::operation) == 1;
    };
    KZFileManager::touchFile(file, SetCreationDate::yes);
    files.fails = {};
    EXPECT_TRUE(dated);
}

TEST_F(Touching, DoesNotMindACreationDateThatCannotBeSet) {
    const auto file = add("file");
    files.alwaysFail(Operation::setCreationDate, EPERM);
    EXPECT_TRUE(KZFileManager::touchFile(file, SetCreationDate::yes));
    files.fails = {};
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(Touching, TellsTheDesktopAndPassesAnExceptionOn) {
    const auto file = add("file");
    files.fails = [](const Call& call) -> std::optional<int> {
        if (call.operation == Operation::setCreationDate) {
            throw std::runtime_error("from the host");
        }
        return {};
    };
    EXPECT_THROW(KZFileManager::touchFile(file, SetCreationDate::yes), std::runtime_error);
    files.fails = {};
    EXPECT_THAT(workspace.notes, ElementsAre(file));
}

TEST_F(Touching, TakesNoPathForAnOption) {
    KZFileManager::touchFile("--reference=/etc/passwd");
    EXPECT_THAT(authorization.executions,
                ElementsAre(Execution{
                    .tool = "/usr/bin/touch", .arguments = {"-c", "./--reference=/etc/passwd"}, .drain = true}));
}

}  // namespace
