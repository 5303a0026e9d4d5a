#include "lib/KZFileManager/Queries.h"

#include <sys/stat.h>

#include <cmath>

#include "tests/lib/FilesFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Optional;

namespace {

class Queries : public FilesFixture {};
// A host on which one path exists, so that the machine's real "/Volumes" is left alone.
class FilesWithOneVolume : public fakes::FailingFileManager {
public:
    using FailingFileManager::FailingFileManager;
    std::string root;
    std::vector<std::string> asked;

    bool fileExists(const std::string& path) override {
        asked.push_back(path);
        return path == root;
    }
};

class Volumes : public FilesFixture {
protected:
    Volumes() {
        auto host = makeHost();
        host.files = &volumes;
        scope.emplace(host);
    }
    FilesWithOneVolume volumes{*platform::linux_host::services().files};
    std::optional<platform::ScopedHost> scope;
};
class Locking : public FilesFixture {};
class DiskInformation : public FilesFixture {
protected:
    // Stands in for the disk tool: prints the text.
    void toolPrints(const std::string& text) {
        const auto answer = add("answer", text);
        const auto tool = add("diskutil", "#!/bin/sh\ncat '" + answer + "'\n");
        ::chmod(tool.c_str(), 0755);
        processes.substitutes["/usr/sbin/diskutil"] = tool;
    }
};

TEST_F(Queries, SeeThroughLinks) {
    const auto file = add("file");
    const auto folder = add("folder/");
    const auto toFile = addLink("toFile", "file");
    const auto toFolder = addLink("toFolder", "folder");
    const auto dangling = addLink("dangling", "nowhere");

    EXPECT_TRUE(KZFileManager::fileExistsAtPath(toFile));
    EXPECT_TRUE(KZFileManager::fileExistsAtPath(folder));
    EXPECT_FALSE(KZFileManager::fileExistsAtPath(dangling));
    EXPECT_TRUE(KZFileManager::isDirectoryAtPath(toFolder));
    EXPECT_FALSE(KZFileManager::isDirectoryAtPath(file));
    EXPECT_FALSE(KZFileManager::isDirectoryAtPath(dangling));
    EXPECT_FALSE(KZFileManager::isDirectoryAtPath(disk / "gone"));
}

TEST_F(Queries, KnowALinkWhereverItLeads) {
    add("file");
    EXPECT_TRUE(KZFileManager::isSymbolicLinkAtPath(addLink("link", "file")));
    EXPECT_TRUE(KZFileManager::isSymbolicLinkAtPath(addLink("dangling", "nowhere")));
    EXPECT_FALSE(KZFileManager::isSymbolicLinkAtPath(disk / "file"));
    EXPECT_FALSE(KZFileManager::isSymbolicLinkAtPath(disk / "gone"));
}

TEST_F(Queries, AskTheDesktopWhatAPackageIs) {
    const auto folder = add("Plug.vst3/");
    EXPECT_FALSE(KZFileManager::isPackageAtPath(folder));
    workspace.packages.insert(folder);
    EXPECT_TRUE(KZFileManager::isPackageAtPath(folder));
}

TEST_F(Queries, TellTheDatesOfAnItem) {
    const auto before = std::chrono::system_clock::now() - std::chrono::seconds{2};
    const auto file = add("file");
    EXPECT_GT(KZFileManager::modificationDateForFile(file).value(), before);
    EXPECT_EQ(KZFileManager::modificationDateForFile(disk / "gone"), std::nullopt);
    EXPECT_EQ(KZFileManager::creationDateForFile(disk / "gone"), std::nullopt);

    const platform::Date date{std::chrono::seconds{1'000'000'000}};
    if (files.setCreationDate(file, date)) {
        GTEST_SKIP() << "the temporary folder keeps no creation dates";
    }
    EXPECT_EQ(KZFileManager::creationDateForFile(file), date);
}

TEST_F(Queries, TellTheDateOfALinkItself) {
    add("file");
    std::filesystem::last_write_time(disk / "file",
                                     std::filesystem::file_time_type::clock::now() - std::chrono::hours{48});
    const auto link = addLink("link", "file");
    EXPECT_GT(KZFileManager::modificationDateForFile(link), KZFileManager::modificationDateForFile(disk / "file"));
}

TEST(SizesAsPeopleReadThem, ChangeUnitAtEachPowerOf1024) {
    EXPECT_EQ(KZFileManager::formatFileSize(0), "0 B");
    EXPECT_EQ(KZFileManager::formatFileSize(1), "1 B");
    EXPECT_EQ(KZFileManager::formatFileSize(1023), "1023 B");
    EXPECT_EQ(KZFileManager::formatFileSize(1024), "1.00 KB");
    EXPECT_EQ(KZFileManager::formatFileSize(1536), "1.50 KB");
    EXPECT_EQ(KZFileManager::formatFileSize(1048575), "1024.00 KB");
    EXPECT_EQ(KZFileManager::formatFileSize(1048576), "1.00 MB");
    EXPECT_EQ(KZFileManager::formatFileSize(1073741823), "1024.00 MB");
    EXPECT_EQ(KZFileManager::formatFileSize(1073741824), "1.00 GB");
    EXPECT_EQ(KZFileManager::formatFileSize(1099511627775), "1024.00 GB");
    EXPECT_EQ(KZFileManager::formatFileSize(1099511627776), "1.00 TB");
}

TEST(SizesAsPeopleReadThem, HaveNoUnitAboveTerabytes) {
    EXPECT_EQ(KZFileManager::formatFileSize(std::pow(1024.0, 5)), "1024.00 TB");
}

TEST(SizesAsPeopleReadThem, StayBytesBelowNought) { EXPECT_EQ(KZFileManager::formatFileSize(-5), "-5 B"); }

TEST_F(Volumes, AreAlwaysThereOutsideTheVolumesFolder) {
    EXPECT_TRUE(KZFileManager::isVolumeMountedForPath("/Users/x"));
    EXPECT_TRUE(KZFileManager::isDriveMountedForPath("/Users/x"));
    EXPECT_TRUE(KZFileManager::isVolumeMountedForPath("relative/Volumes/Gone"));
    EXPECT_THAT(volumes.asked, IsEmpty());
}

TEST_F(Volumes, AreThereForTheVolumesFolderItself) {
    EXPECT_TRUE(KZFileManager::isVolumeMountedForPath("/Volumes"));
    EXPECT_TRUE(KZFileManager::isDriveMountedForPath("/Volumes"));
    EXPECT_THAT(volumes.asked, IsEmpty());
}

TEST_F(Volumes, AreAskedForByTheirRootWithADoubledSlash) {
    volumes.root = "//Volumes/Disk";
    EXPECT_TRUE(KZFileManager::isVolumeMountedForPath("/Volumes/Disk/a/b"));
    EXPECT_TRUE(KZFileManager::isDriveMountedForPath("/Volumes/Disk"));
    EXPECT_FALSE(KZFileManager::isVolumeMountedForPath("/Volumes/Gone/file"));
    EXPECT_FALSE(KZFileManager::isDriveMountedForPath("/Volumes/Gone"));
    EXPECT_THAT(volumes.asked, ElementsAre("//Volumes/Disk", "//Volumes/Disk", "//Volumes/Gone", "//Volumes/Gone"));
}

TEST_F(Volumes, DifferInWhatTheyTakeForAVolumesPath) {
    EXPECT_TRUE(KZFileManager::isDriveMountedForPath("/VolumesX/a/b"));
    EXPECT_FALSE(KZFileManager::isVolumeMountedForPath("/VolumesX/a/b"));
    EXPECT_THAT(volumes.asked, ElementsAre("//VolumesX/a"));
    volumes.root = "//VolumesX/a";
    EXPECT_TRUE(KZFileManager::isVolumeMountedForPath("/VolumesX/a/b"));
}

TEST_F(Volumes, HoldWhatLiesBelowTheirMountPoint) {
    workspace.mountPoints = {"/", "/Volumes/Data", "/Volumes/Data2"};
    EXPECT_THAT(KZFileManager::volumeMountPointForPath("/Volumes/Data"), Optional(std::string("/Volumes/Data")));
    EXPECT_THAT(KZFileManager::volumeMountPointForPath("/Volumes/Data/x"), Optional(std::string("/Volumes/Data")));
    EXPECT_THAT(KZFileManager::volumeMountPointForPath("/Volumes/Data2/x"), Optional(std::string("/Volumes/Data2")));
}

TEST_F(Volumes, AreNotFoundByTheBeginningOfTheirNameAlone) {
    workspace.mountPoints = {"/", "/Volumes/Data"};
    EXPECT_EQ(KZFileManager::volumeMountPointForPath("/Volumes/Data2/x"), std::nullopt);
    EXPECT_EQ(KZFileManager::volumeMountPointForPath("/Volumes"), std::nullopt);
    EXPECT_EQ(KZFileManager::volumeMountPointForPath("/VolumesX"), std::nullopt);
}

TEST_F(Volumes, OfEverythingElseAreTheStartUpVolume) {
    workspace.mountPoints = {"/", "/mnt/usb"};
    EXPECT_THAT(KZFileManager::volumeMountPointForPath("/tmp"), Optional(std::string("/")));
    EXPECT_THAT(KZFileManager::volumeMountPointForPath("/mnt/usb/x"), Optional(std::string("/mnt/usb")));
}

TEST_F(Volumes, AreFoundInTheOrderInWhichTheHostListsThem) {
    workspace.mountPoints = {"/mnt", "/mnt/usb"};
    EXPECT_THAT(KZFileManager::volumeMountPointForPath("/mnt/usb/x"), Optional(std::string("/mnt")));
}

TEST_F(DiskInformation, IsWhatTheToolSays) {
    toolPrints(
        "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>VolumeName</key><string>Data</string>"
        "</dict></plist>");
    const auto info = KZFileManager::infoForDiskAtMountpoint("/Volumes/Data").value();
    EXPECT_EQ(info.at("VolumeName"), platform::PropertyValue{std::string("Data")});
    EXPECT_THAT(processes.commands().back().arguments, ElementsAre("info", "-plist", "/Volumes/Data"));
}

TEST_F(DiskInformation, IsMissingWithoutAWordWhenTheToolSaysNothing) {
    toolPrints("");
    EXPECT_EQ(KZFileManager::infoForDiskAtMountpoint("/Volumes/Data"), std::nullopt);
    EXPECT_THAT(console.lines(), IsEmpty());
}

TEST_F(DiskInformation, ThatCannotBeParsedIsReportedOnTheConsole) {
    toolPrints("<plist><dict><key>");
    EXPECT_EQ(KZFileManager::infoForDiskAtMountpoint("/Volumes/Data"), std::nullopt);
    EXPECT_THAT(console.lines(), ElementsAre(::testing::StartsWith("Error converting diskutil output: ")));
}

TEST_F(DiskInformation, IsMissingWhenTheToolHasNotAnsweredAfterFiveSeconds) {
    const auto tool = add("diskutil", "#!/bin/sh\nexec sleep 60\n");
    ::chmod(tool.c_str(), 0755);
    processes.substitutes["/usr/sbin/diskutil"] = tool;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(KZFileManager::infoForDiskAtMountpoint("/"));
    const auto time = std::chrono::steady_clock::now() - start;
    EXPECT_GE(time, std::chrono::seconds{5});
    EXPECT_LT(time, std::chrono::seconds{15});
    EXPECT_THAT(newLogEntries(), ElementsAre("Task /usr/sbin/diskutil timed out. Terminating..."));
}

TEST_F(DiskInformation, ThatIsNoDictionaryIsMissing) {
    toolPrints("<?xml version=\"1.0\"?><plist version=\"1.0\"><array/></plist>");
    EXPECT_EQ(KZFileManager::infoForDiskAtMountpoint("/Volumes/Data"), std::nullopt);
}

TEST_F(Locking, ReportsAFailureInEitherDirectionAsOneToUnlock) {
    const auto file = add("file");
    files.alwaysFail(Operation::setImmutable, EPERM);
    KZFileManager::lockFile(file);
    KZFileManager::unlockFile(file);
    files.fails = {};
    const std::string message = "Unable to unlock file " + file + ": " + file + ": Operation not permitted";
    EXPECT_THAT(newLogEntries(), ElementsAre(message, message));
}

TEST_F(Locking, OfAnUnlockedFileChangesNothingAndSaysNothing) {
    const auto file = add("file");
    KZFileManager::unlockFile(file);
    EXPECT_FALSE(KZFileManager::isFileLocked(file));
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(Locking, SetsAndClearsTheFlag) {
    const auto file = add("file");
    KZFileManager::lockFile(file);
    const bool locked = KZFileManager::isFileLocked(file);
    KZFileManager::unlockFile(file);
    if (!locked) {
        GTEST_SKIP() << "the flag needs the superuser and a file system that knows it: "
                     << ::testing::PrintToString(newLogEntries());
    }
    EXPECT_FALSE(KZFileManager::isFileLocked(file));
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(Locking, OfAMissingFileIsNo) { EXPECT_FALSE(KZFileManager::isFileLocked(disk / "gone")); }

TEST_F(Locking, OfAFolderReachesEveryFileBelowItButNoFolder) {
    const auto top = add("folder/top");
    const auto deep = add("folder/a/b/deep");
    const auto linked = add("elsewhere/linked");
    addLink("folder/link", "../elsewhere");
    std::vector<std::string> changed;
    files.fails = [&](const Call& call) -> std::optional<int> {
        if (call.operation != Operation::setImmutable) {
            return {};
        }
        changed.push_back(call.path);
        return EPERM;
    };
    KZFileManager::lockFolder(disk / "folder");
    const auto expected = ::testing::UnorderedElementsAre(top, deep, disk / "folder/link/linked");
    EXPECT_THAT(changed, expected);
    changed.clear();
    KZFileManager::unlockFolder(disk / "folder");
    EXPECT_THAT(changed, expected);
    files.fails = {};
}

TEST_F(Locking, OfAFolderThatLiesWithinItselfEnds) {
    add("folder/file");
    addLink("folder/loop", ".");
    files.forgetCalls();
    KZFileManager::unlockFolder(disk / "folder");
    EXPECT_EQ(std::ranges::count(files.calls(), Operation::setImmutable, &Call::operation), 1);
}

TEST_F(Locking, PassesOverAMissingFolder) {
    KZFileManager::lockFolder(disk / "gone");
    KZFileManager::unlockFolder(disk / "gone");
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(Queries, SetPermissionsOfAFile) {
    const auto file = add("file");
    KZFileManager::setPosixPermissions(0640, file);
    EXPECT_EQ(files.attributes(file)->permissions, 0640U);
    KZFileManager::setPosixPermissions(04755, file);
    EXPECT_EQ(files.attributes(file)->permissions, 04755U);
    EXPECT_THAT(newLogEntries(), IsEmpty());
}

TEST_F(Queries, LogWhyPermissionsCouldNotBeSet) {
    const auto file = add("file");
    files.alwaysFail(Operation::setPermissions, EPERM);
    KZFileManager::setPosixPermissions(0640, file);
    files.fails = {};
    EXPECT_THAT(newLogEntries(),
                ElementsAre("Error setting permissions for file " + file + ": " + file + ": Operation not permitted"));
}

TEST_F(Queries, MakeAnEmptyFileByMovingItIntoPlace) {
    const auto path = disk / "new.txt";
    EXPECT_TRUE(KZFileManager::createEmptyFile(path));
    EXPECT_TRUE(std::filesystem::is_empty(path));
    EXPECT_TRUE(std::filesystem::is_empty(folders.temporary));
}

TEST_F(Queries, NeverEmptyAFileThatExists) {
    const auto path = add("precious", "contents");
    EXPECT_FALSE(KZFileManager::createEmptyFile(path));
    EXPECT_EQ(read(path), "contents");
    EXPECT_THAT(authorization.executions, IsEmpty());
    EXPECT_TRUE(std::filesystem::is_empty(folders.temporary));
}

TEST_F(Queries, AskForRightsToPutAnEmptyFileWhereOnlyAnAdministratorMay) {
    const auto path = disk / "new.txt";
    files.alwaysFail(Operation::moveItem, EACCES);
    EXPECT_TRUE(KZFileManager::createEmptyFile(path));
    files.fails = {};
    ASSERT_EQ(authorization.executions.size(), 1U);
    EXPECT_EQ(authorization.executions[0].tool, "/bin/mv");
    EXPECT_EQ(authorization.executions[0].arguments.back(), path);
}

TEST_F(Queries, FailToMakeAnEmptyFileWithoutATemporaryOne) {
    files.alwaysFail(Operation::writeAtomically, ENOSPC);
    EXPECT_FALSE(KZFileManager::createEmptyFile(disk / "new.txt"));
    files.fails = {};
    EXPECT_FALSE(stands(disk / "new.txt"));
}

}  // namespace
