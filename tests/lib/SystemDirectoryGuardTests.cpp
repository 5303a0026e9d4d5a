// Which paths must never be removed or replaced as a whole.
#include "tests/lib/LocalPathsFixture.h"

namespace {

using SystemDirectoryGuard = LocalPathsTest;

TEST_F(SystemDirectoryGuard, ProtectsTheRoot) {
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/"));
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/", ExactMatch::yes));
}

TEST_F(SystemDirectoryGuard, DoesNotProtectPathsOfFewerThanThreeCharacters) {
    m_folders.paths[{FolderKind::library, FolderDomain::local}] = {"/a"};

    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory(""));
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/a"));
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("//"));
}

TEST_F(SystemDirectoryGuard, CountsCharactersAsThePlatformDoesNotBytes) {
    m_folders.paths[{FolderKind::library, FolderDomain::local}] = {"/é"};
    m_folders.paths[{FolderKind::caches, FolderDomain::local}] = {"/🎹"};

    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/é"));  // two characters in three bytes
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/🎹"));   // a slash and a surrogate pair
}

TEST_F(SystemDirectoryGuard, ProtectsEachStandardFolderOfBothDomains) {
    for (const auto user : {UserDomain::yes, UserDomain::no}) {
        for (const auto& path :
             {KZLocalPaths::applicationDirectory(user), KZLocalPaths::adminApplicationDirectory(user),
              KZLocalPaths::libraryDirectory(user), KZLocalPaths::prefsDirectory(user),
              KZLocalPaths::cacheDirectory(user), KZLocalPaths::appSupportDirectory(user)}) {
            EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory(path.value(), ExactMatch::yes)) << *path;
        }
    }
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/home/ada/Documents", ExactMatch::yes));
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/home/ada/Desktop", ExactMatch::yes));
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/home/ada", ExactMatch::yes));
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/System/Library", ExactMatch::yes));
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/Library/Documentation", ExactMatch::yes));
}

TEST_F(SystemDirectoryGuard, AsksForTheStandardFoldersOnceForManyPaths) {
    const KZLocalPaths::SystemDirectoryGuard guard;
    m_folders.paths.clear();  // would have no folder to name any more

    EXPECT_TRUE(guard.protects("/home/ada/Library/Caches", ExactMatch::yes));
    EXPECT_TRUE(guard.protects("/usr/bin", ExactMatch::no));
    EXPECT_FALSE(guard.protects("/usr/bin", ExactMatch::yes));
    EXPECT_FALSE(guard.protects("/home/ada/Library/Caches/mine", ExactMatch::no));
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/home/ada/Library/Caches"));
}

TEST_F(SystemDirectoryGuard, DoesNotProtectTheStandardFoldersThatItDoesNotName) {
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/home/ada/Movies"));
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/home/ada/Library/Logs"));
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/home/ada/.Trash"));
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/home/ada/Library/Documentation"));
}

TEST_F(SystemDirectoryGuard, ProtectsTheNamedSystemFoldersThemselves) {
    for (const char* path : {"/Users/Shared", "/usr", "/var", "/bin", "/sbin", "/System"}) {
        EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory(path, ExactMatch::yes)) << path;
    }
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/Users"));
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/private/var"));
}

TEST_F(SystemDirectoryGuard, ProtectsWhatLiesInTheSystemFoldersUnlessTheMatchIsExact) {
    for (const char* path : {"/usr/bin", "/usr/localx", "/var/log", "/bin/sh", "/sbin/init", "/private/var/log",
                             "/System/Library/CoreServices"}) {
        EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory(path)) << path;
        EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory(path, ExactMatch::yes)) << path;
    }
}

TEST_F(SystemDirectoryGuard, LetsLocalSoftwareBeChanged) {
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/usr/local/bin"));
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/usr/local"));  // begins with "/usr/", not with "/usr/local/"
}

TEST_F(SystemDirectoryGuard, DoesNotProtectWhatLiesInTheUsersFolders) {
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/home/ada/Library/Audio"));
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/home/ada/notes.txt"));
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/Library/Audio"));
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/Users/Shared/x"));
}

TEST_F(SystemDirectoryGuard, CutsTwoCharactersOffAPathWithATrailingSlash) {
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/usr/"));           // seen as "/u"
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/Users/Shared/"));  // seen as "/Users/Share"
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/usrx/"));           // seen as "/usr"
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/usr//"));           // seen as "/usr"
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/usré/"));           // seen as "/usr"
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/usr🎹/"));          // half of the pair stays
}

TEST_F(SystemDirectoryGuard, LooksAtThePrefixAfterTheCut) {
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/usr/bin/"));
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/usr/local/"));  // seen as "/usr/loca"
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/usr/local/bin/"));
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/usr/bin/", ExactMatch::yes));
}

TEST_F(SystemDirectoryGuard, ComparesTheTextAsItStands) {
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/USR"));
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("//usr/bin"));
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/home/../usr"));
}

TEST_F(SystemDirectoryGuard, AsSuperuserProtectsTheConsoleUsersFolders) {
    becomeSuperuser();

    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/home/grace"));
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/home/grace/Library"));
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/home/ada"));
}

TEST_F(SystemDirectoryGuard, StillProtectsTheSystemWhenNobodyIsAtTheConsole) {
    becomeSuperuser();
    m_identity.console.reset();

    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/Library"));
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/usr"));
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/home/grace"));
}

}  // namespace
