#include "lib/KZFileManager/Mutations.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "lib/base/Text.h"
#include "tests/lib/FilesFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

namespace {

using Execution = fakes::FakeAuthorization::Execution;

class Trashing : public FilesFixture {};
class Removing : public FilesFixture {};
class MakingFolders : public FilesFixture {};
class Copying : public FilesFixture {};
class Moving : public FilesFixture {};

TEST_F(Trashing, MovesTheItemToTheUsersTrash) {
    const auto file = add("folder/file", "contents");
    EXPECT_TRUE(KZFileManager::trashFile(file));
    EXPECT_FALSE(stands(file));
    EXPECT_EQ(read(trash + "/file"), "contents");
    using Recycled = fakes::FakeWorkspace::Recycled;
    EXPECT_THAT(workspace.recycled,
                ElementsAre(Recycled{.folder = disk / "folder", .name = "file", .trashFolder = trash}));
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(Trashing, OfAMissingItemSucceedsWithNothingButTheUnlocking) {
    files.forgetCalls();
    EXPECT_TRUE(KZFileManager::trashFile(disk / "gone"));
    const auto calls = files.calls();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].operation, Operation::setImmutable);
    EXPECT_EQ(calls[1].operation, Operation::fileExists);
    EXPECT_THAT(workspace.recycled, IsEmpty());
    EXPECT_THAT(newLogEntries(), ElementsAre(StartsWith("Unable to unlock file " + (disk / "gone") + ": ")));
}

TEST_F(Trashing, UnlocksTheItemFirst) {
    const auto file = add("file");
    files.forgetCalls();
    KZFileManager::trashFile(file);
    EXPECT_EQ(files.calls().front(), (Call{.operation = Operation::setImmutable, .path = file, .otherPath = ""}));
}

TEST_F(Trashing, TakesAnItemThatCannotBeUnlockedAllTheSame) {
    const auto file = add("file");
    files.alwaysFail(Operation::setImmutable, EPERM);
    EXPECT_TRUE(KZFileManager::trashFile(file));
    EXPECT_FALSE(stands(file));
    files.fails = {};
}

TEST_F(Trashing, AsksForRightsInSilenceWhenThePlainAttemptFails) {
    const auto file = add("file");
    workspace.recycleFailure = platform::Error{EACCES, "refused"};
    EXPECT_TRUE(KZFileManager::trashFile(file));
    EXPECT_THAT(authorization.executions,
                ElementsAre(Execution{.tool = "/bin/mv", .arguments = {"-f", file, trash + "/file"}, .drain = false}));
    EXPECT_THAT(newLogEntries(), IsEmpty());
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(Trashing, FailsWithoutAskingForRightsWhenThatIsForbidden) {
    const auto file = add("file");
    workspace.recycleFailure = platform::Error{EACCES, "refused"};
    EXPECT_FALSE(KZFileManager::trashFile(file, ShouldAuth::no));
    EXPECT_EQ(authorization.created, 0);
    EXPECT_TRUE(stands(file));
}

TEST_F(Trashing, HasNowhereToGoForTheSuperuserWhenNobodyIsAtTheConsole) {
    makeSuperuser();
    const auto file = add("file");
    EXPECT_FALSE(KZFileManager::trashFile(file));
    EXPECT_TRUE(stands(file));
    EXPECT_THAT(workspace.recycled, IsEmpty());
    EXPECT_THAT(processes.commands(), IsEmpty());
    EXPECT_THAT(console.lines(), ElementsAre("Error in authMoveFile: new path is null"));
}

TEST_F(Trashing, GoesToTheTrashOfTheConsoleUserForTheSuperuser) {
    makeSuperuser();
    identity.console = "grace";
    identity.homes["grace"] = disk / "grace";
    const auto file = add("file");
    EXPECT_TRUE(KZFileManager::trashFile(file));
    EXPECT_TRUE(stands(disk / "grace/.Trash/file"));
}

TEST_F(Trashing, LeavesADanglingLinkWhereItIs) {
    const auto link = addLink("link", "nowhere");
    EXPECT_TRUE(KZFileManager::trashFile(link));
    EXPECT_TRUE(stands(link));
}

TEST_F(Removing, DeletesAFolderWithAllThatLiesInIt) {
    add("folder/a");
    add("folder/sub/b");
    EXPECT_TRUE(KZFileManager::removeFile(disk / "folder"));
    EXPECT_FALSE(stands(disk / "folder"));
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(Removing, DeletesALinkAndNotWhatItLeadsTo) {
    const auto file = add("file");
    EXPECT_TRUE(KZFileManager::removeFile(addLink("link", "file")));
    EXPECT_FALSE(stands(disk / "link"));
    EXPECT_TRUE(stands(file));
}

TEST_F(Removing, OfAMissingItemSucceeds) { EXPECT_TRUE(KZFileManager::removeFile(disk / "gone")); }

TEST_F(Removing, LogsWhyItFailedAndAsksForRights) {
    const auto file = add("file");
    files.alwaysFail(Operation::removeItem, EACCES);
    EXPECT_TRUE(KZFileManager::removeFile(file));
    files.fails = {};
    EXPECT_THAT(newLogEntries(), ElementsAre("Error removing file: " + file + ": Permission denied. Authorizing..."));
    EXPECT_THAT(authorization.executions,
                ElementsAre(Execution{.tool = "/bin/rm", .arguments = {"-Rdf", file}, .drain = false}));
}

TEST_F(Removing, LogsAuthorizingEvenWhenThatIsForbidden) {
    const auto file = add("file");
    files.alwaysFail(Operation::removeItem, EACCES);
    EXPECT_FALSE(KZFileManager::removeFile(file, ShouldAuth::no));
    files.fails = {};
    EXPECT_THAT(newLogEntries(), ElementsAre("Error removing file: " + file + ": Permission denied. Authorizing..."));
    EXPECT_EQ(authorization.created, 0);
}

TEST_F(Removing, IsRefusedWhenTheUserCancelsTheDialog) {
    const auto file = add("file");
    files.alwaysFail(Operation::removeItem, EACCES);
    authorization.rightsStatus = -60006;
    EXPECT_FALSE(KZFileManager::removeFile(file));
    files.fails = {};
    EXPECT_THAT(authorization.executions, IsEmpty());
}

TEST_F(MakingFolders, MakesTheMissingOnesAbove) {
    EXPECT_TRUE(KZFileManager::createDirectory(disk / "a/b/c"));
    EXPECT_TRUE(std::filesystem::is_directory(disk / "a/b/c"));
}

TEST_F(MakingFolders, IsContentWithAFolderThatIsThere) {
    EXPECT_TRUE(KZFileManager::createDirectory(add("folder/")));
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(MakingFolders, OnAVolumeThatIsNotMountedIsRefusedOnTheConsoleOnly) {
    EXPECT_FALSE(KZFileManager::createDirectory("/Volumes/Wickfield Nowhere/x"));
    EXPECT_THAT(console.lines(), ElementsAre("Unable to create directory. Drive is not mounted."));
    EXPECT_THAT(newLogEntries(), IsEmpty());
    EXPECT_EQ(authorization.created, 0);
    EXPECT_FALSE(stands("/Volumes/Wickfield Nowhere"));
}

TEST_F(MakingFolders, BesideTheVolumesFolderNeedsNoVolume) {
    files.alwaysFail(Operation::createDirectory, EACCES);
    EXPECT_TRUE(KZFileManager::createDirectory("/VolumesOfNobody/a/b"));
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_EQ(authorization.executions.size(), 1U);
}

TEST_F(MakingFolders, LogsWhyItFailedAndAsksForRights) {
    files.alwaysFail(Operation::createDirectory, EACCES);
    EXPECT_TRUE(KZFileManager::createDirectory(disk / "new"));
    files.fails = {};
    EXPECT_THAT(newLogEntries(),
                ElementsAre("Error creating folder: " + (disk / "new") + ": Permission denied. Authorizing..."));
    EXPECT_THAT(authorization.executions,
                ElementsAre(Execution{.tool = "/bin/mkdir", .arguments = {"-p", disk / "new"}, .drain = false}));
}

TEST_F(MakingFolders, LogsAuthorizingEvenWhenThatIsForbidden) {
    const auto file = add("file");
    EXPECT_FALSE(KZFileManager::createDirectory(file, ShouldAuth::no));
    EXPECT_THAT(newLogEntries(), ElementsAre(::testing::AllOf(StartsWith("Error creating folder: "),
                                                              ::testing::EndsWith(": File exists. Authorizing..."))));
    EXPECT_EQ(authorization.created, 0);
}

TEST_F(Copying, MakesACopyAndKeepsTheSource) {
    const auto source = add("source", "contents");
    EXPECT_TRUE(KZFileManager::copyFile(source, disk / "copy"));
    EXPECT_EQ(read(disk / "copy"), "contents");
    EXPECT_TRUE(stands(source));
}

TEST_F(Copying, UnlocksTheFolderThatIsToHoldTheCopy) {
    const auto source = add("source");
    add("folder/");
    files.forgetCalls();
    KZFileManager::copyFile(source, disk / "folder/copy");
    EXPECT_EQ(files.calls().at(0),
              (Call{.operation = Operation::setImmutable, .path = disk / "folder", .otherPath = ""}));
    EXPECT_EQ(files.calls().at(1).operation, Operation::copyItem);
}

TEST_F(Copying, OfNoPathIsLoggedAndRefused) {
    EXPECT_FALSE(KZFileManager::copyFile(std::nullopt, disk / "copy"));
    EXPECT_FALSE(KZFileManager::copyFile(std::nullopt, std::nullopt));
    EXPECT_FALSE(KZFileManager::copyFile("/source", std::nullopt));
    EXPECT_THAT(newLogEntries(),
                ElementsAre("Error copying file: source path is nil", "Error copying file: source path is nil",
                            "Error copying file /source: destination path is nil"));
}

TEST_F(Copying, OfNoPathIsPrintedToo) {
    ::testing::internal::CaptureStdout();
    KZFileManager::copyFile(std::nullopt, disk / "copy");
    EXPECT_THAT(::testing::internal::GetCapturedStdout(),
                ::testing::HasSubstr("Error copying file: source path is nil"));
}

TEST_F(Copying, OfNoPathWaitsForNothing) {
    EXPECT_FALSE(KZFileManager::copyFile(std::nullopt, std::nullopt, std::chrono::seconds{10}));
    EXPECT_FALSE(KZFileManager::copyFile("/source", std::nullopt, std::chrono::seconds{10}));
    EXPECT_EQ(mainThread.slices, 0);
}

// Whatever stands at the destination, the plain copy leaves it as it is and the rest is up to the administrator's copy.
class CopyingOntoSomething : public Copying, public ::testing::WithParamInterface<const char*> {
protected:
    void putThere(const std::string& kind) {
        if (kind == "file") {
            add("taken", "old");
        } else if (kind == "folder") {
            add("taken/old");
        } else if (kind == "link") {
            addLink("taken", "source");
        } else {
            addLink("taken", "nowhere");
        }
    }
};

TEST_P(CopyingOntoSomething, FailsPlainlyAndReturnsThePrivilegedCopysAnswer) {
    const auto source = add("source", "new");
    putThere(GetParam());
    EXPECT_FALSE(KZFileManager::copyFile(source, disk / "taken", ShouldAuth::no));
    EXPECT_THAT(newLogEntries(), ElementsAre(::testing::AllOf(StartsWith("Error copying file: "),
                                                              ::testing::EndsWith(": File exists. Authorizing..."))));
    EXPECT_TRUE(stands(disk / "taken"));
    EXPECT_FALSE(stands(disk / "nowhere"));

    EXPECT_TRUE(KZFileManager::copyFile(source, disk / "taken"));
    EXPECT_THAT(authorization.executions,
                ElementsAre(Execution{
                    .tool = "/bin/cp", .arguments = {"-f", "-p", "-R", source, disk / "taken"}, .drain = false}));
    authorization.executeStatus = -60031;
    EXPECT_FALSE(KZFileManager::copyFile(source, disk / "taken"));
}

INSTANTIATE_TEST_SUITE_P(Kinds, CopyingOntoSomething, ::testing::Values("file", "folder", "link", "danglingLink"),
                         [](const auto& kind) { return std::string(kind.param); });

TEST_F(Copying, OfAMissingSourceFailsWithoutTouchingTheDestination) {
    EXPECT_FALSE(KZFileManager::copyFile(disk / "gone", disk / "copy"));
    EXPECT_FALSE(stands(disk / "copy"));
    EXPECT_THAT(authorization.executions, IsEmpty());
}

TEST_F(Copying, IsRefusedHonestlyOnAHostWithoutAdministratorRights) {
    auto host = makeHost();
    host.authorization = nullptr;
    const platform::ScopedHost scope(host);
    const auto source = add("source");
    add("taken");
    EXPECT_FALSE(KZFileManager::copyFile(source, disk / "taken"));
    EXPECT_FALSE(KZFileManager::copyFile(source, disk / "taken", std::chrono::seconds{10}));
}

TEST_F(Moving, MovesAndLogsNothing) {
    const auto source = add("source", "contents");
    EXPECT_TRUE(KZFileManager::moveFile(source, disk / "there"));
    EXPECT_EQ(read(disk / "there"), "contents");
    EXPECT_FALSE(stands(source));
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(Moving, UnlocksWhatStandsAtTheDestinationAndBelowIt) {
    const auto source = add("Plug");
    const auto locked = add("there/Plug/locked");
    files.forgetCalls();
    KZFileManager::moveFile(source, disk / "there", ShouldAuth::no);
    std::vector<std::string> unlocked;
    for (const auto& call : files.calls()) {
        if (call.operation == Operation::setImmutable) {
            unlocked.push_back(call.path);
        }
    }
    EXPECT_THAT(unlocked, ElementsAre(disk / "there", locked));
}

TEST_F(Moving, ReplacesNothingAndLogsInTwoSteps) {
    const auto source = add("source", "new");
    const auto there = add("there", "old");
    EXPECT_TRUE(KZFileManager::moveFile(source, there));
    EXPECT_EQ(read(there), "old");
    EXPECT_THAT(newLogEntries(),
                ElementsAre(::testing::AllOf(StartsWith("Error moving file: "), ::testing::EndsWith(": File exists.")),
                            "Authorizing..."));
    EXPECT_THAT(authorization.executions,
                ElementsAre(Execution{.tool = "/bin/mv", .arguments = {"-f", source, there}, .drain = false}));
}

TEST_F(Moving, SaysNothingOfAuthorizingWhenThatIsForbidden) {
    const auto source = add("source", "new");
    const auto there = add("there", "old");
    EXPECT_FALSE(KZFileManager::moveFile(source, there, ShouldAuth::no));
    EXPECT_THAT(newLogEntries(), ElementsAre(StartsWith("Error moving file: ")));
    EXPECT_EQ(authorization.created, 0);
}

// A volume on which upper and lower case are the same.
class CaseInsensitiveFiles : public fakes::FailingFileManager {
public:
    using FailingFileManager::FailingFileManager;
    bool fileExists(const std::string& path) override {
        const auto parent = std::filesystem::path(path).parent_path();
        for (const auto& entry : std::filesystem::directory_iterator(parent)) {
            if (kz::lowercased(entry.path().string()) == kz::lowercased(path)) {
                return true;
            }
        }
        return false;
    }
    platform::Failure setImmutable(const std::string& /*path*/, bool /*immutable*/) override { return {}; }
};

std::vector<std::pair<std::string, std::string>> movesIn(const fakes::FailingFileManager& files) {
    std::vector<std::pair<std::string, std::string>> moves;
    for (const auto& call : files.calls()) {
        if (call.operation == fakes::FailingFileManager::Operation::moveItem) {
            moves.emplace_back(call.path, call.otherPath);
        }
    }
    return moves;
}

class ChangingLetterCase : public FilesFixture {
protected:
    ChangingLetterCase() {
        host.files = &caseInsensitive;
        scope.emplace(host);
    }
    CaseInsensitiveFiles caseInsensitive{*platform::linux_host::services().files};
    platform::Host host = makeHost();
    std::optional<platform::ScopedHost> scope;
    const std::string source = add("Readme", "contents");
    const std::string destination = disk / "README";
    const std::string between = disk / "README 2";
};

TEST_F(ChangingLetterCase, GoesThroughAFreeName) {
    EXPECT_TRUE(KZFileManager::moveFile(source, destination));
    EXPECT_THAT(movesIn(caseInsensitive), ElementsAre(std::pair(source, between), std::pair(between, destination)));
    EXPECT_EQ(read(destination), "contents");
}

TEST_F(ChangingLetterCase, FallsBackToThePlainMoveWhenTheFirstStepFails) {
    caseInsensitive.fails = [&](const Call& call) {
        return call.otherPath == between ? std::optional(EIO) : std::nullopt;
    };
    EXPECT_TRUE(KZFileManager::moveFile(source, destination));
    EXPECT_THAT(movesIn(caseInsensitive), ElementsAre(std::pair(source, between), std::pair(source, destination)));
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(ChangingLetterCase, LeavesTheItemUnderTheFreeNameWhenTheSecondStepFails) {
    caseInsensitive.fails = [&](const Call& call) {
        return call.otherPath == destination ? std::optional(EIO) : std::nullopt;
    };
    EXPECT_FALSE(KZFileManager::moveFile(source, destination));
    EXPECT_EQ(read(between), "contents");
    EXPECT_THAT(newLogEntries(),
                ElementsAre("Error moving file: " + source + ": Input/output error.", "Authorizing..."));
}

TEST_F(ChangingLetterCase, WaitsForNothingButAMoment) {
    EXPECT_TRUE(KZFileManager::moveFile(source, destination, std::chrono::seconds{10}));
    EXPECT_EQ(mainThread.slices, 0);
}

TEST_F(Moving, ThatOnlyChangesLetterCaseWorksWhereCaseMatters) {
    const auto source = add("Grüße", "contents");
    EXPECT_TRUE(KZFileManager::moveFile(source, disk / "GRÜßE", std::chrono::seconds{10}));
    EXPECT_EQ(read(disk / "GRÜßE"), "contents");
    EXPECT_FALSE(stands(source));
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(Moving, OntoItselfLeavesTheItemAsItWas) {
    const auto file = add("file", "contents");
    EXPECT_TRUE(KZFileManager::moveFile(file, file));
    EXPECT_EQ(read(file), "contents");
}

TEST_F(Moving, OfALinkMovesTheLink) {
    add("file");
    EXPECT_TRUE(KZFileManager::moveFile(addLink("link", "file"), disk / "moved"));
    EXPECT_TRUE(std::filesystem::is_symlink(disk / "moved"));
}

}  // namespace
