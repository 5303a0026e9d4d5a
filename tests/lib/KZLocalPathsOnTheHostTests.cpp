// The standard folders of the host that the tests run on.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "lib/KZLocalPaths.h"
#include "platform/linux/services/LinuxHost.h"
#include "tests/fakes/ScopedEnvironment.h"

namespace {

class HostPaths : public testing::Test {
    platform::ScopedHost m_host{platform::linux_host::services()};
};

// Whether the work, done in a child that is an ordinary user with the home "/home/ada", says yes.
template <typename Work>
bool holdsForAda(Work work) {
    const pid_t child = ::fork();
    if (child == 0) {
        constexpr uid_t daemon = 1;
        ::setenv("HOME", "/home/ada", 1);
        ::setenv("XDG_CONFIG_HOME", "/nonexistent", 1);
        ::_exit((::getuid() != 0 || ::setuid(daemon) == 0) && work() ? 0 : 1);
    }
    int status = -1;
    ::waitpid(child, &status, 0);
    return status == 0;
}

TEST_F(HostPaths, OfAnOrdinaryUserLieInHisHome) {
    EXPECT_TRUE(holdsForAda([] {
        return KZLocalPaths::appSupportDirectory(UserDomain::yes) == "/home/ada/Library/Application Support" &&
               KZLocalPaths::documentDirectory(UserDomain::yes) == "/home/ada/Documents" &&
               KZLocalPaths::trashDirectory() == "/home/ada/.Trash" && KZLocalPaths::userDirectory() == "/home/ada" &&
               KZLocalPaths::appSupportDirectory(UserDomain::no) == "/Library/Application Support";
    }));
}

TEST_F(HostPaths, OfAnOrdinaryUserAreProtected) {
    EXPECT_TRUE(holdsForAda([] {
        return KZLocalPaths::isPathSystemDirectory("/home/ada") &&
               KZLocalPaths::isPathSystemDirectory("/home/ada/Library/Preferences") &&
               !KZLocalPaths::isPathSystemDirectory("/home/ada/Library/Audio");
    }));
}

TEST_F(HostPaths, OfTheSuperuserAreThoseOfWhoIsAtTheConsole) {
    if (::getuid() != 0) {
        GTEST_SKIP() << "needs to run as the superuser";
    }
    const fakes::ScopedEnvironment asked("SUDO_UID", "1");
    const auto user = KZLocalPaths::currentConsoleUser();
    ASSERT_TRUE(user);
    const auto home = platform::linux_host::services().identity->homeFolderForUser(*user);
    ASSERT_TRUE(home);

    EXPECT_EQ(KZLocalPaths::username(), user);
    EXPECT_EQ(KZLocalPaths::prefsDirectory(UserDomain::yes), *home + "/Library/Preferences");
    EXPECT_EQ(KZLocalPaths::documentDirectory(UserDomain::yes), *home + "/Documents");
    EXPECT_EQ(KZLocalPaths::prefsDirectory(UserDomain::no), "/Library/Preferences");
}

TEST_F(HostPaths, OfTheSuperuserAreNoneWhenNobodyIsAtTheConsole) {
    const fakes::ScopedEnvironment sudo("SUDO_UID", std::nullopt);
    const fakes::ScopedEnvironment pkexec("PKEXEC_UID", std::nullopt);
    if (::getuid() != 0 || KZLocalPaths::currentConsoleUser()) {
        GTEST_SKIP() << "needs to run as the superuser of a machine with nobody at its console";
    }

    EXPECT_EQ(KZLocalPaths::userDirectory(), std::nullopt);
    EXPECT_EQ(KZLocalPaths::libraryDirectory(UserDomain::yes), std::nullopt);
    EXPECT_EQ(KZLocalPaths::trashDirectory(), std::nullopt);
}

TEST_F(HostPaths, ForTemporaryFilesAreFreshAndInAFolderThatExists) {
    const auto path = KZLocalPaths::tempFile();

    EXPECT_TRUE(std::filesystem::is_directory(KZLocalPaths::tempDirectory()));
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_NE(path, KZLocalPaths::tempFile());
}

}  // namespace
