#include <algorithm>
#include <array>
#include <cerrno>
#include <ctime>

#include "lib/KZAuthorization.h"
#include "lib/base/Format.h"
#include "tests/fakes/ScopedEnvironment.h"
#include "tests/lib/FilesFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::UnorderedElementsAre;

namespace {

using Execution = fakes::FakeAuthorization::Execution;
using CommandLine = RecordingProcesses::CommandLine;

class PrivilegedCommands : public FilesFixture {
protected:
    static KZAuthorization& session() { return *KZAuthorization::sharedController(); }

    Execution started(const std::string& tool, const std::vector<std::string>& arguments) const {
        return {.tool = tool, .arguments = arguments, .drain = false};
    }

    void takeTheToolsAway() {
        files.fails = [](const Call& call) {
            return call.path.starts_with("/bin/") ? std::optional(ENOENT) : std::nullopt;
        };
    }

    // Tools of the superuser are started and not waited for.
    template <typename Condition>
    static bool comesTrue(const Condition& condition) {
        for (int look = 0; look < 500 && !condition(); ++look) {
            std::this_thread::sleep_for(std::chrono::milliseconds{10});
        }
        return condition();
    }
    static bool goes(const std::string& path) {
        return comesTrue([&] { return !stands(path); });
    }
    static bool comes(const std::string& path) {
        return comesTrue([&] { return stands(path); });
    }
};

TEST_F(PrivilegedCommands, StartTheSessionWhenNeeded) {
    EXPECT_EQ(session().authExecTask("/bin/true", {"a", "b"}), 0);
    EXPECT_EQ(session().authExecTask("/bin/true", {}), 0);
    EXPECT_EQ(authorization.created, 1);
    EXPECT_THAT(authorization.executions, ElementsAre(started("/bin/true", {"a", "b"}), started("/bin/true", {})));
}

TEST_F(PrivilegedCommands, WaitForTheToolOnlyWhenAskedTo) {
    session().authExecTask("/bin/true", {}, Async::no);
    session().authExecTask("/bin/true", {}, Async::yes);
    EXPECT_TRUE(authorization.executions[0].drain);
    EXPECT_FALSE(authorization.executions[1].drain);
}

TEST_F(PrivilegedCommands, NeverAskForRightsForAToolThatIsMissing) {
    EXPECT_EQ(session().authExecTask(disk / "gone", {}), -2);
    EXPECT_EQ(authorization.created, 0);
    EXPECT_THAT(console.lines(), ElementsAre("Unable to execute task: path " + (disk / "gone") + " doesn't exist"));
    EXPECT_THAT(newLogEntries(), IsEmpty());
    makeSuperuser();
    EXPECT_EQ(session().authExecTask(disk / "gone", {}), -2);
}

TEST_F(PrivilegedCommands, FailWithoutTheirTools) {
    const auto file = add("file");
    takeTheToolsAway();
    EXPECT_FALSE(session().authRemoveFile(file));
    EXPECT_FALSE(session().authMoveFile(file, disk / "moved"));
    EXPECT_FALSE(session().authCopyFile(file, disk / "copy"));
    EXPECT_FALSE(session().authCreateDir(disk / "made"));
    EXPECT_EQ(authorization.created, 0);
    EXPECT_THAT(console.lines(), ElementsAre("Unable to execute task: path /bin/rm doesn't exist",
                                             "Unable to execute task: path /bin/mv doesn't exist",
                                             "Unable to execute task: path /bin/cp doesn't exist",
                                             "Unable to execute task: path /bin/mkdir doesn't exist"));
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(PrivilegedCommands, FailWhenTheUserCancelsAndAskAgainTheNextTime) {
    const auto file = add("file");
    authorization.rightsStatus = -60006;
    EXPECT_EQ(session().authExecTask("/bin/true", {}), -1);
    EXPECT_FALSE(session().authRemoveFile(file));
    EXPECT_FALSE(session().authTrashFile(file));
    EXPECT_FALSE(session().authCreateDir(disk / "new"));
    EXPECT_FALSE(session().authCopyFile(file, disk / "copy"));
    EXPECT_FALSE(session().authMoveFile(file, disk / "moved"));
    EXPECT_EQ(authorization.requests.size(), 6U);
    EXPECT_THAT(authorization.executions, IsEmpty());
}

TEST_F(PrivilegedCommands, PassTheHostsStatusOn) {
    authorization.executeStatus = -60031;
    EXPECT_EQ(session().authExecTask("/bin/true", {}), -60031);
    EXPECT_TRUE(session().isAuthorized());
}

TEST_F(PrivilegedCommands, RefuseAnArgumentThatWouldNameAnotherItem) {
    const std::string path("/tmp\0/x", 7);
    EXPECT_EQ(session().authExecTask("/bin/true", {path}), EINVAL);
    EXPECT_FALSE(session().authRemoveFile(path));
    EXPECT_FALSE(session().authCreateDir(path));
    makeSuperuser();
    EXPECT_FALSE(session().authRemoveFile(path));
    EXPECT_FALSE(session().authCreateDir(path));
    EXPECT_THAT(authorization.executions, IsEmpty());
    EXPECT_THAT(processes.commands(), IsEmpty());
}

TEST_F(PrivilegedCommands, RunTheSuperusersToolsDirectly) {
    makeSuperuser();
    const auto made = disk / "made";
    EXPECT_EQ(session().authExecTask("/bin/mkdir", {made}, Async::no), 0);
    EXPECT_TRUE(stands(made));
    EXPECT_EQ(session().authExecTask("/bin/rmdir", {made}, Async::yes), 0);
    EXPECT_TRUE(goes(made));
    EXPECT_EQ(session().authExecTask("/bin/false", {}, Async::no), 0);
    EXPECT_THAT(authorization.executions, IsEmpty());
}

TEST_F(PrivilegedCommands, OfTheSuperuserSucceedWhateverTheirToolsDo) {
    makeSuperuser();
    const auto file = add("file");
    EXPECT_TRUE(session().authMoveFile(file, disk / "no/such/folder"));
    EXPECT_TRUE(session().authCopyFile(file, disk / "no/such/folder"));
    EXPECT_TRUE(session().authCreateDir(file + "/below"));
    EXPECT_TRUE(session().authRemoveFile(file + "/below"));
    EXPECT_EQ(processes.commands().size(), 4U);
}

// Removing looks for its tool first, the others do not.
TEST_F(PrivilegedCommands, OfTheSuperuserMissOnlyTheToolThatRemoves) {
    makeSuperuser();
    const auto file = add("file");
    takeTheToolsAway();
    EXPECT_TRUE(session().authMoveFile(file, disk / "moved"));
    EXPECT_TRUE(session().authCopyFile(file, disk / "copy"));
    EXPECT_TRUE(session().authCreateDir(disk / "made"));
    EXPECT_FALSE(session().authRemoveFile(file));
}

TEST_F(PrivilegedCommands, RemoveWithTheSystemsTool) {
    const auto file = add("file");
    EXPECT_TRUE(session().authRemoveFile(file));
    EXPECT_THAT(authorization.executions, ElementsAre(started("/bin/rm", {"-Rdf", file})));
}

TEST_F(PrivilegedCommands, ReallyRemoveForTheSuperuser) {
    makeSuperuser();
    add("folder/file");
    EXPECT_TRUE(session().authRemoveFile(disk / "folder"));
    EXPECT_TRUE(goes(disk / "folder"));
}

TEST_F(PrivilegedCommands, MakeFoldersWithTheSystemsTool) {
    EXPECT_TRUE(session().authCreateDir(disk / "a/b"));
    EXPECT_THAT(authorization.executions, ElementsAre(started("/bin/mkdir", {"-p", disk / "a/b"})));
    makeSuperuser();
    EXPECT_TRUE(session().authCreateDir(disk / "a/b"));
    EXPECT_TRUE(comes(disk / "a/b"));
}

TEST_F(PrivilegedCommands, PauseAMomentAfterMakingAFolder) {
    session().authStart();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(session().authCreateDir(disk / "a"));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::microseconds{500});
}

TEST_F(PrivilegedCommands, CopyWithTheSystemsTool) {
    const auto file = add("file", "contents");
    EXPECT_TRUE(session().authCopyFile(file, disk / "copy"));
    EXPECT_THAT(authorization.executions, ElementsAre(started("/bin/cp", {"-f", "-p", "-R", file, disk / "copy"})));
    makeSuperuser();
    EXPECT_TRUE(session().authCopyFile(file, disk / "copy"));
    EXPECT_TRUE(comesTrue([&] { return read(disk / "copy") == "contents"; }));
}

TEST_F(PrivilegedCommands, MoveWithTheSystemsTool) {
    const auto file = add("file", "contents");
    EXPECT_TRUE(session().authMoveFile(file, disk / "moved"));
    EXPECT_THAT(authorization.executions, ElementsAre(started("/bin/mv", {"-f", file, disk / "moved"})));
    makeSuperuser();
    EXPECT_TRUE(session().authMoveFile(file, disk / "moved"));
    EXPECT_TRUE(goes(file));
    EXPECT_EQ(read(disk / "moved"), "contents");
}

TEST_F(PrivilegedCommands, FailInSilenceWithoutASource) {
    EXPECT_FALSE(session().authMoveFile(disk / "gone", disk / "x"));
    EXPECT_FALSE(session().authCopyFile(disk / "gone", disk / "x"));
    EXPECT_THAT(console.lines(), IsEmpty());
    EXPECT_EQ(authorization.created, 0);
}

TEST_F(PrivilegedCommands, ReportAPathThatIsNone) {
    EXPECT_FALSE(session().authMoveFile(std::nullopt, std::nullopt));
    EXPECT_FALSE(session().authMoveFile(disk / "gone", std::nullopt));
    EXPECT_FALSE(session().authCopyFile(std::nullopt, std::nullopt));
    EXPECT_FALSE(session().authCopyFile(disk / "gone", std::nullopt));
    EXPECT_THAT(console.lines(),
                ElementsAre("Error in authMoveFile: old path is null", "Error in authMoveFile: new path is null",
                            "Error in authCopyFile: old path is null", "Error in authCopyFile: new path is null"));
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(PrivilegedCommands, RefuseToHarmASystemFolder) {
    EXPECT_FALSE(session().authRemoveFile("/usr"));
    EXPECT_FALSE(session().authTrashFile("/usr"));
    EXPECT_FALSE(session().authTrashFolderContents("/usr"));
    EXPECT_FALSE(session().authMoveFolderContents("/usr", disk / "x"));
    EXPECT_FALSE(session().authMoveFile("/usr", disk / "x"));
    EXPECT_THAT(console.lines(),
                ElementsAre("Unable to delete path /usr because it is a system directory.",
                            "Unable to trash path /usr because it is a system directory.",
                            "Unable to trash folder contents of path /usr because it is a system directory.",
                            "Unable to move contents of path /usr because it is a system directory.",
                            "Unable to move path /usr because it is a system directory."));
    EXPECT_THAT(authorization.executions, IsEmpty());
    EXPECT_THAT(newLogEntries(), IsEmpty());
    EXPECT_EQ(authorization.created, 0);
}

TEST_F(PrivilegedCommands, LookForThePathsThenForTheSystemsFoldersThenForTheSource) {
    EXPECT_FALSE(session().authMoveFile("/usr", std::nullopt));
    files.alwaysFail(Operation::fileExists, ENOENT);
    EXPECT_FALSE(session().authMoveFile("/usr", disk / "x"));
    files.fails = {};
    EXPECT_THAT(console.lines(), ElementsAre("Error in authMoveFile: new path is null",
                                             "Unable to move path /usr because it is a system directory."));
}

TEST_F(PrivilegedCommands, CopyAndCreateEvenASystemFolder) {
    EXPECT_TRUE(session().authCopyFile("/usr", disk / "x"));
    EXPECT_TRUE(session().authCreateDir("/usr"));
    EXPECT_EQ(authorization.executions.size(), 2U);
}

TEST_F(PrivilegedCommands, WorkOnWhatLiesInASystemFolder) {
    EXPECT_TRUE(session().authRemoveFile("/usr/share/wickfield-not-there"));
    EXPECT_EQ(authorization.executions.size(), 1U);
}

TEST_F(PrivilegedCommands, TrashIntoTheUsersTrash) {
    const auto file = add("file");
    EXPECT_TRUE(session().authTrashFile(file));
    EXPECT_THAT(authorization.executions, ElementsAre(started("/bin/mv", {"-f", file, trash + "/file"})));
}

TEST_F(PrivilegedCommands, StampTheNameOfAnItemWhoseNameIsTakenInTheTrash) {
    const auto file = add("A.txt");
    const auto bare = add("Notes");
    add("home/.Trash/A.txt");
    add("home/.Trash/Notes");
    session().authTrashFile(file);
    session().authTrashFile(bare);
    EXPECT_THAT(authorization.executions[0].arguments[2], MatchesRegex(trash + "/A_20[0-9]{12}\\.txt"));
    EXPECT_THAT(authorization.executions[1].arguments[2], MatchesRegex(trash + "/Notes_20[0-9]{12}\\."));
}

TEST_F(PrivilegedCommands, DoNotStampANameTwice) {
    const auto file = add("A.txt");
    add("home/.Trash/A.txt");
    std::vector<std::string> taken;
    for (int second = 0; second < 20; ++second) {
        const std::time_t at = std::time(nullptr) + second;
        std::array<char, 32> text{};
        std::tm local{};
        std::strftime(text.data(), text.size(), "%Y%m%d%H%M%S", ::localtime_r(&at, &local));
        taken.push_back(add("home/.Trash/A_" + std::string(text.data()) + ".txt"));
    }
    EXPECT_TRUE(session().authTrashFile(file));
    EXPECT_THAT(taken, ::testing::Contains(authorization.executions[0].arguments[2]));
}

TEST_F(PrivilegedCommands, TrashNothingThatIsMissing) {
    EXPECT_FALSE(session().authTrashFile(disk / "gone"));
    EXPECT_EQ(authorization.created, 0);
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(PrivilegedCommands, StampByTheUsersClock) {
    const auto file = add("A.txt");
    add("home/.Trash/A.txt");
    const fakes::ScopedEnvironment zone("TZ", "TST-14");  // fourteen hours ahead
    const auto stamped = [&](std::time_t at) {
        at += std::time_t{14} * 3600;
        std::array<char, 32> text{};
        std::tm there{};
        std::strftime(text.data(), text.size(), "%Y%m%d%H%M%S", ::gmtime_r(&at, &there));
        return trash + "/A_" + text.data() + ".txt";
    };
    const std::time_t before = std::time(nullptr);
    EXPECT_TRUE(session().authTrashFile(file));
    const std::string name = authorization.executions[0].arguments[2];
    EXPECT_GE(name, stamped(before));
    EXPECT_LE(name, stamped(std::time(nullptr)));
}

TEST_F(PrivilegedCommands, TrashIntoTheTrashOfTheUserWhoStartedTheProcess) {
    session();
    makeSuperuser();
    identity.console = "grace";
    identity.homes["grace"] = disk / "grace";
    std::filesystem::create_directories(trash);
    const auto file = add("file");
    EXPECT_TRUE(session().authTrashFile(file));
    EXPECT_THAT(processes.commands(),
                ElementsAre(CommandLine{.tool = "/bin/mv", .arguments = {"-f", file, trash + "/file"}}));
    EXPECT_TRUE(comes(trash + "/file"));
}

TEST_F(PrivilegedCommands, HaveNoTrashForTheSuperuserWhenNobodyIsAtTheConsole) {
    makeSuperuser();
    const auto file = add("file");
    EXPECT_FALSE(session().authTrashFile(file));
    EXPECT_FALSE(session().authTrashFile(file, DeleteOnRootAccount::yes));
    EXPECT_THAT(console.lines(), ElementsAre("Error in authMoveFile: new path is null"));
    EXPECT_THAT(processes.commands(), IsEmpty());
    EXPECT_TRUE(stands(file));
}

TEST_F(PrivilegedCommands, DeleteWhatStandsAtTheNameInTheTrashForTheSuperuser) {
    makeSuperuser();
    identity.console = "grace";
    identity.homes["grace"] = disk / "grace";
    const auto file = add("file");
    EXPECT_TRUE(session().authTrashFile(file, DeleteOnRootAccount::yes));
    EXPECT_THAT(processes.commands(),
                ElementsAre(CommandLine{.tool = "/bin/rm", .arguments = {"-Rdf", disk / "grace/.Trash/file"}}));
    EXPECT_TRUE(stands(file));
}

TEST_F(PrivilegedCommands, DeleteNothingForAnOrdinaryUser) {
    const auto file = add("file");
    EXPECT_TRUE(session().authTrashFile(file, DeleteOnRootAccount::yes));
    EXPECT_THAT(authorization.executions, ElementsAre(started("/bin/mv", {"-f", file, trash + "/file"})));
}

TEST_F(PrivilegedCommands, TrashEveryEntryOfAFolder) {
    const auto a = add("folder/a");
    const auto b = add("folder/.b");
    EXPECT_TRUE(session().authTrashFolderContents(disk / "folder"));
    EXPECT_THAT(authorization.executions, UnorderedElementsAre(started("/bin/mv", {"-f", a, trash + "/a"}),
                                                               started("/bin/mv", {"-f", b, trash + "/.b"})));
}

TEST_F(PrivilegedCommands, GoOnThroughAFolderAfterAFailure) {
    add("folder/a");
    add("folder/b");
    authorization.executeStatus = -60031;
    EXPECT_FALSE(session().authTrashFolderContents(disk / "folder"));
    EXPECT_FALSE(session().authMoveFolderContents(disk / "folder", disk / "to"));
    EXPECT_EQ(authorization.executions.size(), 4U);
}

TEST_F(PrivilegedCommands, NeedNoRightsForAnEmptyFolder) {
    const auto folder = add("folder/");
    EXPECT_TRUE(session().authTrashFolderContents(folder));
    EXPECT_TRUE(session().authTrashFolderContents(disk / "gone"));
    EXPECT_TRUE(session().authMoveFolderContents(folder, disk / "to"));
    EXPECT_EQ(authorization.created, 0);
}

TEST_F(PrivilegedCommands, DeleteAFoldersEntriesForTheSuperuserWhoWasNeverSomebodyElse) {
    makeSuperuser();
    const auto file = add("folder/a");
    EXPECT_TRUE(session().authTrashFolderContents(disk / "folder", DeleteOnRootAccount::yes));
    EXPECT_THAT(processes.commands(), ElementsAre(CommandLine{.tool = "/bin/rm", .arguments = {"-R", "-f", file}}));
    EXPECT_TRUE(goes(file));
}

TEST_F(PrivilegedCommands, TrashAFoldersEntriesForTheSuperuserWhoWasSomebodyElse) {
    session();
    makeSuperuser();
    const auto file = add("folder/a");
    EXPECT_TRUE(session().authTrashFolderContents(disk / "folder", DeleteOnRootAccount::yes));
    EXPECT_THAT(processes.commands(),
                ElementsAre(CommandLine{.tool = "/bin/mv", .arguments = {"-f", file, trash + "/a"}}));
}

TEST_F(PrivilegedCommands, MoveEveryEntryOfAFolder) {
    const auto file = add("folder/a");
    EXPECT_TRUE(session().authMoveFolderContents(disk / "folder", disk / "to"));
    EXPECT_THAT(authorization.executions, ElementsAre(started("/bin/mv", {"-f", file, disk / "to/a"})));
}

TEST_F(PrivilegedCommands, TakeNoPathForAnOption) {
    session().authCreateDir("--version");
    session().authRemoveFile("-x");
    EXPECT_THAT(authorization.executions,
                ElementsAre(started("/bin/mkdir", {"-p", "./--version"}), started("/bin/rm", {"-Rdf", "./-x"})));
}

}  // namespace
