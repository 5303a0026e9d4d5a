#include "lib/KZLocalPaths.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <ctime>
#include <set>
#include <thread>

#include "tests/lib/LocalPathsFixture.h"

namespace {

using platform::FolderDomain;
using platform::FolderKind;
using Path = std::optional<std::string>;

using StandardDirectories = LocalPathsTest;
using SuperuserDirectories = LocalPathsTest;
using TemporaryNames = LocalPathsTest;

// The user's folders and the machine's.

TEST_F(StandardDirectories, AreTheUsersWithTheFlag) {
    EXPECT_EQ(KZLocalPaths::applicationDirectory(UserDomain::yes), "/home/ada/Applications");
    EXPECT_EQ(KZLocalPaths::adminApplicationDirectory(UserDomain::yes), "/home/ada/Applications/Utilities");
    EXPECT_EQ(KZLocalPaths::documentDirectory(UserDomain::yes), "/home/ada/Documents");
    EXPECT_EQ(KZLocalPaths::libraryDirectory(UserDomain::yes), "/home/ada/Library");
    EXPECT_EQ(KZLocalPaths::prefsDirectory(UserDomain::yes), "/home/ada/Library/Preferences");
    EXPECT_EQ(KZLocalPaths::cacheDirectory(UserDomain::yes), "/home/ada/Library/Caches");
    EXPECT_EQ(KZLocalPaths::appSupportDirectory(UserDomain::yes), "/home/ada/Library/Application Support");
    EXPECT_EQ(KZLocalPaths::logDirectory(UserDomain::yes), "/home/ada/Library/Logs");
}

TEST_F(StandardDirectories, AreTheMachinesWithoutTheFlag) {
    EXPECT_EQ(KZLocalPaths::applicationDirectory(UserDomain::no), "/Applications");
    EXPECT_EQ(KZLocalPaths::adminApplicationDirectory(UserDomain::no), "/Applications/Utilities");
    EXPECT_EQ(KZLocalPaths::libraryDirectory(UserDomain::no), "/Library");
    EXPECT_EQ(KZLocalPaths::prefsDirectory(UserDomain::no), "/Library/Preferences");
    EXPECT_EQ(KZLocalPaths::cacheDirectory(UserDomain::no), "/Library/Caches");
    EXPECT_EQ(KZLocalPaths::appSupportDirectory(UserDomain::no), "/Library/Application Support");
    EXPECT_EQ(KZLocalPaths::logDirectory(UserDomain::no), "/Library/Logs");
}

TEST_F(StandardDirectories, WithoutAFlagAreThoseOfTheirOneDomain) {
    EXPECT_EQ(KZLocalPaths::movieDirectory(), "/home/ada/Movies");
    EXPECT_EQ(KZLocalPaths::desktopDirectory(), "/home/ada/Desktop");
    EXPECT_EQ(KZLocalPaths::systemLibraryDirectory(), "/System/Library");
    EXPECT_EQ(KZLocalPaths::localDocumentationDirectory(), "/Library/Documentation");
}

TEST_F(StandardDirectories, ThatTheHostDoesNotHaveAreNone) {
    EXPECT_EQ(KZLocalPaths::documentDirectory(UserDomain::no), std::nullopt);
}

TEST_F(StandardDirectories, JoinedOntoAMissingLibraryAreNone) {
    m_folders.paths.clear();

    EXPECT_EQ(KZLocalPaths::prefsDirectory(UserDomain::yes), std::nullopt);
    EXPECT_EQ(KZLocalPaths::logDirectory(UserDomain::no), std::nullopt);
}

TEST_F(StandardDirectories, AreTheFirstOfSeveralAnswers) {
    m_folders.paths[{FolderKind::library, FolderDomain::local}] = {"/first", "/second"};

    EXPECT_EQ(KZLocalPaths::libraryDirectory(UserDomain::no), "/first");
}

TEST_F(StandardDirectories, OfAnOrdinaryUserKeepWhateverTheHostAnswers) {
    setUserLibrary("/var/root/Library");

    EXPECT_EQ(KZLocalPaths::libraryDirectory(UserDomain::yes), "/var/root/Library");
}

TEST_F(StandardDirectories, IncludeTheTrashInTheUsersHome) {
    EXPECT_EQ(KZLocalPaths::trashDirectory(), "/home/ada/.Trash");
}

TEST_F(StandardDirectories, GiveTheOperatingSystemsOwnCacheFolderOrNone) {
    EXPECT_EQ(KZLocalPaths::darwinCacheDirectory(), std::nullopt);

    m_folders.cache = "/home/ada/.cache";
    EXPECT_EQ(KZLocalPaths::darwinCacheDirectory(), "/home/ada/.cache");
}

TEST_F(StandardDirectories, OfAnOrdinaryUserDoNotDependOnWhoIsAtTheConsole) {
    m_identity.console = "grace";

    EXPECT_EQ(KZLocalPaths::userDirectory(), "/home/ada");
    EXPECT_EQ(KZLocalPaths::username(), "ada");
    EXPECT_EQ(KZLocalPaths::currentConsoleUser(), "grace");
}

TEST_F(StandardDirectories, KnowNoConsoleUserWhileALoginWindowOwnsTheConsole) {
    m_identity.console = "loginwindow";

    EXPECT_EQ(KZLocalPaths::currentConsoleUser(), std::nullopt);
}

// The superuser.

TEST_F(SuperuserDirectories, AreThoseOfTheConsoleUser) {
    becomeSuperuser();

    EXPECT_EQ(KZLocalPaths::prefsDirectory(UserDomain::yes), "/home/grace/Library/Preferences");
    EXPECT_EQ(KZLocalPaths::appSupportDirectory(UserDomain::yes), "/home/grace/Library/Application Support");
    EXPECT_EQ(KZLocalPaths::documentDirectory(UserDomain::yes), "/home/grace/Documents");
    EXPECT_EQ(KZLocalPaths::trashDirectory(), "/home/grace/.Trash");
    EXPECT_EQ(KZLocalPaths::userDirectory(), "/home/grace");
    EXPECT_EQ(KZLocalPaths::username(), "grace");
}

TEST_F(SuperuserDirectories, InTheLocalDomainStayAsTheyAre) {
    becomeSuperuser();

    EXPECT_EQ(KZLocalPaths::prefsDirectory(UserDomain::no), "/Library/Preferences");
}

TEST_F(SuperuserDirectories, InTheSystemDomainStayAsTheyAre) {
    becomeSuperuser();

    EXPECT_EQ(KZLocalPaths::systemLibraryDirectory(), "/System/Library");
}

TEST_F(SuperuserDirectories, InTheLocalDomainStayAsTheyAreEvenBelowRootsHome) {
    becomeSuperuser();
    m_folders.paths[{FolderKind::library, FolderDomain::local}] = {"/var/root/Library"};

    EXPECT_EQ(KZLocalPaths::libraryDirectory(UserDomain::no), "/var/root/Library");
}

TEST_F(SuperuserDirectories, BelowThePrivateHomeKeepTheLastLetterOfIt) {
    becomeSuperuser("/private/var/root");

    EXPECT_EQ(KZLocalPaths::libraryDirectory(UserDomain::yes), "/home/grace/t/Library");
}

TEST_F(SuperuserDirectories, LoseBothBeginningsOneAfterTheOther) {
    becomeSuperuser();
    setUserLibrary("/var/root/private/var/root/Library");

    EXPECT_EQ(KZLocalPaths::libraryDirectory(UserDomain::yes), "/home/grace/t/Library");
}

TEST_F(SuperuserDirectories, LoseTheBeginningsInThatOrderOnly) {
    becomeSuperuser();
    setUserLibrary("/private/var/root/var/root/Library");

    EXPECT_EQ(KZLocalPaths::libraryDirectory(UserDomain::yes), "/home/grace/t/var/root/Library");
}

TEST_F(SuperuserDirectories, WithNeitherBeginningAreJoinedWhole) {
    becomeSuperuser();
    setUserLibrary("/root/Library");

    EXPECT_EQ(KZLocalPaths::libraryDirectory(UserDomain::yes), "/home/grace/root/Library");
}

TEST_F(SuperuserDirectories, CutTheBeginningAsTextNotAsAFolder) {
    becomeSuperuser();
    setUserLibrary("/var/rootkit");

    EXPECT_EQ(KZLocalPaths::libraryDirectory(UserDomain::yes), "/home/grace/kit");
}

TEST_F(SuperuserDirectories, ThatTheHostDoesNotHaveAreNone) {
    becomeSuperuser();
    m_folders.paths.clear();

    EXPECT_EQ(KZLocalPaths::movieDirectory(), std::nullopt);
}

class NobodyAtTheConsole : public LocalPathsTest, public testing::WithParamInterface<Path> {};

TEST_P(NobodyAtTheConsole, LeavesTheSuperuserWithoutAnyFolderOfAUser) {
    becomeSuperuser();
    m_identity.console = GetParam();

    EXPECT_EQ(KZLocalPaths::currentConsoleUser(), std::nullopt);
    EXPECT_EQ(KZLocalPaths::username(), std::nullopt);
    for (const auto& path :
         {KZLocalPaths::userDirectory(), KZLocalPaths::trashDirectory(), KZLocalPaths::desktopDirectory(),
          KZLocalPaths::movieDirectory(), KZLocalPaths::applicationDirectory(UserDomain::yes),
          KZLocalPaths::adminApplicationDirectory(UserDomain::yes), KZLocalPaths::documentDirectory(UserDomain::yes),
          KZLocalPaths::libraryDirectory(UserDomain::yes), KZLocalPaths::prefsDirectory(UserDomain::yes),
          KZLocalPaths::cacheDirectory(UserDomain::yes), KZLocalPaths::appSupportDirectory(UserDomain::yes),
          KZLocalPaths::logDirectory(UserDomain::yes)}) {
        EXPECT_EQ(path, std::nullopt);
    }
}

TEST_P(NobodyAtTheConsole, LeavesTheSuperuserTheMachinesFolders) {
    becomeSuperuser();
    m_identity.console = GetParam();

    EXPECT_EQ(KZLocalPaths::prefsDirectory(UserDomain::no), "/Library/Preferences");
}

INSTANTIATE_TEST_SUITE_P(LocalPaths, NobodyAtTheConsole, testing::Values(Path(), Path("loginwindow")));

TEST_F(SuperuserDirectories, AreNoneForAConsoleUserWithoutAnAccount) {
    becomeSuperuser();
    m_identity.console = "ghost";

    EXPECT_EQ(KZLocalPaths::userDirectory(), std::nullopt);
    EXPECT_EQ(KZLocalPaths::username(), "ghost");
}

TEST(TimeMachineVolumes, AreToldByAComponentOfAPathBelowVolumes) {
    EXPECT_TRUE(KZLocalPaths::isPathOnTimeMachineVolume("/Volumes/Disk/Backups.backupdb/mac/x"));
    EXPECT_TRUE(KZLocalPaths::isPathOnTimeMachineVolume("/Volumes/Backups.backupdb"));
}

TEST(TimeMachineVolumes, AreNotToldByPartOfAComponentOrOutsideOfVolumes) {
    EXPECT_FALSE(KZLocalPaths::isPathOnTimeMachineVolume("/Users/x/Backups.backupdb/y"));
    EXPECT_FALSE(KZLocalPaths::isPathOnTimeMachineVolume("/Volumes/Disk/Backups.backupdb2/x"));
    EXPECT_FALSE(KZLocalPaths::isPathOnTimeMachineVolume("/Volumes/Disk/backups.backupdb"));
    EXPECT_FALSE(KZLocalPaths::isPathOnTimeMachineVolume("Volumes/Disk/Backups.backupdb"));
    EXPECT_FALSE(KZLocalPaths::isPathOnTimeMachineVolume("/Volumes/"));
    EXPECT_FALSE(KZLocalPaths::isPathOnTimeMachineVolume(""));
}

TEST(TrailingSlashes, AreAddedOnce) {
    EXPECT_EQ(KZLocalPaths::ensureTrailingSlash("/a"), "/a/");
    EXPECT_EQ(KZLocalPaths::ensureTrailingSlash("/a/"), "/a/");
    EXPECT_EQ(KZLocalPaths::ensureTrailingSlash("/"), "/");
    EXPECT_EQ(KZLocalPaths::ensureTrailingSlash(""), "");
    EXPECT_EQ(KZLocalPaths::ensureTrailingSlash(std::nullopt), std::nullopt);
}

TEST(TrailingSlashes, AreStrippedOneAtATime) {
    EXPECT_EQ(KZLocalPaths::stripTrailingSlash("/a/"), "/a");
    EXPECT_EQ(KZLocalPaths::stripTrailingSlash("/a//"), "/a/");
    EXPECT_EQ(KZLocalPaths::stripTrailingSlash("//"), "/");
    EXPECT_EQ(KZLocalPaths::stripTrailingSlash("/a"), "/a");
    EXPECT_EQ(KZLocalPaths::stripTrailingSlash("/"), "/");
    EXPECT_EQ(KZLocalPaths::stripTrailingSlash(""), "");
    EXPECT_EQ(KZLocalPaths::stripTrailingSlash(std::nullopt), std::nullopt);
}

// Temporary names.

TEST(RandomStrings, HaveTheLengthAskedForOfLowerCaseLettersAndDigits) {
    const auto text = KZLocalPaths::randomString(8);

    ASSERT_EQ(text.size(), 8U);
    for (const char character : text) {
        EXPECT_TRUE((character >= 'a' && character <= 'z') || (character >= '0' && character <= '9')) << text;
    }
}

TEST(RandomStrings, UseEveryLetterAndDigit) {
    const auto text = KZLocalPaths::randomString(100000);

    EXPECT_EQ(std::set<char>(text.begin(), text.end()).size(), 36U);
}

TEST(RandomStrings, OfNoOrNegativeLengthAreEmpty) {
    EXPECT_EQ(KZLocalPaths::randomString(0), "");
    EXPECT_EQ(KZLocalPaths::randomString(-5), "");
}

// What the generator gives for a seed of these readings of the two clocks.
std::string drawn(std::clock_t processor, std::time_t now, std::size_t length) {
    std::srand(static_cast<unsigned>(processor) * static_cast<unsigned>(now));
    std::string text;
    while (text.size() < length) {
        text += "abcdefghijklmnopqrstuvwxyz0123456789"[std::rand() % 36];
    }
    return text;
}

TEST(RandomStrings, DependOnTheReadingsOfTheClocksAlone) {
    for (const std::size_t length : {4U, 8U, 40U}) {
        const auto firstSecond = std::time(nullptr);
        const auto firstReading = std::clock();
        const auto text = KZLocalPaths::randomString(static_cast<long>(length));
        const auto lastReading = std::clock();
        const auto lastSecond = std::time(nullptr);

        bool isFromTheReadings = false;
        for (auto second = firstSecond; second <= lastSecond; ++second) {
            for (auto reading = firstReading; reading <= lastReading; ++reading) {
                isFromTheReadings |= drawn(reading, second, length) == text;
            }
        }
        EXPECT_TRUE(isFromTheReadings) << text;
    }
}

TEST(RandomStrings, MayBeMadeOnSeveralThreads) {
    std::array<std::string, 4> texts;
    {
        std::array<std::jthread, 4> threads;
        for (std::size_t i = 0; i < threads.size(); ++i) {
            threads.at(i) = std::jthread([&text = texts.at(i)] {
                for (int round = 0; round < 1000; ++round) {
                    text = KZLocalPaths::randomString(16);
                }
            });
        }
    }
    for (const auto& text : texts) {
        EXPECT_EQ(text.size(), 16U);
    }
}

TEST_F(TemporaryNames, AreTheUniqueTextAndEightRandomCharactersInTheTemporaryFolder) {
    const auto path = KZLocalPaths::tempFile();

    EXPECT_TRUE(path.starts_with("/tmp/UNIQUE-1")) << path;
    EXPECT_EQ(path.size(), std::string("/tmp/UNIQUE-1").size() + 8);
}

TEST_F(TemporaryNames, AreNeverTheSameTwice) { EXPECT_NE(KZLocalPaths::tempFile(), KZLocalPaths::tempFile()); }

TEST_F(TemporaryNames, AreJoinedWithOneSlash) {
    m_folders.temporary = "/tmp/";

    EXPECT_TRUE(KZLocalPaths::tempFile().starts_with("/tmp/UNIQUE"));
    EXPECT_EQ(KZLocalPaths::tempDirectory(), "/tmp/");
}

}  // namespace
