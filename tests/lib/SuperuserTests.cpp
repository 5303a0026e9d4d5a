// The superuser's own runs, over the host's real files, folders, Trash and tools. Only who is at the console is made
// up.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "lib/KZAuthorization.h"
#include "lib/KZFileManager.h"
#include "lib/KZLocalPaths.h"
#include "lib/KZLog.h"
#include "lib/base/PathText.h"
#include "platform/linux/services/LinuxHost.h"
#include "tests/fakes/FakeAuthorization.h"
#include "tests/fakes/FakeConsole.h"
#include "tests/fakes/FakeMainThread.h"
#include "tests/fakes/PrivateMounts.h"
#include "tests/fakes/ScopedEnvironment.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/lib/KZAuthorizationReset.h"
#include "tests/lib/KZLogTesting.h"

using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

constexpr uid_t userNumber = 1234;
constexpr const char* userName = "grace-of-the-test";

std::string contentsOf(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

bool writeFile(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    return static_cast<bool>(file.flush());
}

bool stands(const std::string& path) { return std::filesystem::exists(std::filesystem::symlink_status(path)); }

// Tools of the superuser are started and not waited for.
bool comesTrue(const std::function<bool()>& condition, int looks = 500) {
    for (int look = 0; look < looks && !condition(); ++look) {
        std::this_thread::sleep_for(std::chrono::milliseconds{10});
    }
    return condition();
}

class SuperuserOnTheHost : public testing::Test {
protected:
    void SetUp() override {
        if (::getuid() != 0) {
            GTEST_SKIP() << "needs to run as the superuser";
        }
        mounts.emplace();
        if (!mounts->fileSystemAt("/run") || !mounts->fileSystemAt(disk.path())) {
            GTEST_SKIP() << "no right to mount a file system";
        }
        KZLogTesting::beginAfresh();
        m_host.emplace(makeHost());
        m_session.emplace();
    }
    void TearDown() override { KZLogTesting::beginAfresh(); }

    std::string add(const std::string& name, const std::string& contents = "contents") const {
        std::string path = disk / name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        writeFile(path, contents);
        return path;
    }
    static KZAuthorization& session() { return *KZAuthorization::sharedController(); }

    // What a wrong turn would leave in the superuser's home, at the root or in the working directory.
    static std::set<std::string> placesOfTheSuperuser() {
        std::set<std::string> found;
        for (const std::string& folder :
             {std::string("/"), std::string("."), std::string("/root"), std::string("/root/.local/share"),
              std::string("/root/Library"), std::string("/var/root"), std::string("/Library")}) {
            std::error_code ignored;
            for (const auto& entry : std::filesystem::directory_iterator(folder, ignored)) {
                found.insert(folder + ": " + entry.path().filename().string());
            }
        }
        return found;
    }

    platform::Host makeHost() {
        auto host = platform::linux_host::services();
        host.mainThread = &mainThread;
        host.console = &console;
        host.authorization = &authorization;
        return host;
    }

    fakes::TemporaryFolder disk;
    std::optional<PrivateMounts> mounts;
    fakes::FakeMainThread mainThread;
    fakes::FakeConsole console;
    fakes::FakeAuthorization authorization;

private:
    fakes::ScopedEnvironment m_sudo{"SUDO_UID", std::nullopt};
    fakes::ScopedEnvironment m_pkexec{"PKEXEC_UID", std::nullopt};
    std::optional<platform::ScopedHost> m_host;
    std::optional<KZAuthorizationReset> m_session;
};

// Nobody is at the console and nobody asked for the superuser's rights: a fleet tool at start-up, a container.
class SuperuserForNobody : public SuperuserOnTheHost {
protected:
    void SetUp() override {
        SuperuserOnTheHost::SetUp();
        m_before = placesOfTheSuperuser();
    }
    void TearDown() override {
        EXPECT_EQ(placesOfTheSuperuser(), m_before);
        EXPECT_EQ(authorization.created, 0);
        SuperuserOnTheHost::TearDown();
    }

private:
    std::set<std::string> m_before;
};

TEST_F(SuperuserForNobody, HasNoFolderOfAnyUser) {
    EXPECT_EQ(KZLocalPaths::currentConsoleUser(), std::nullopt);
    EXPECT_EQ(KZLocalPaths::username(), std::nullopt);
    for (const auto& folder :
         {KZLocalPaths::applicationDirectory(UserDomain::yes), KZLocalPaths::adminApplicationDirectory(UserDomain::yes),
          KZLocalPaths::documentDirectory(UserDomain::yes), KZLocalPaths::libraryDirectory(UserDomain::yes),
          KZLocalPaths::prefsDirectory(UserDomain::yes), KZLocalPaths::cacheDirectory(UserDomain::yes),
          KZLocalPaths::appSupportDirectory(UserDomain::yes), KZLocalPaths::logDirectory(UserDomain::yes),
          KZLocalPaths::movieDirectory(), KZLocalPaths::desktopDirectory(), KZLocalPaths::trashDirectory(),
          KZLocalPaths::userDirectory()}) {
        EXPECT_EQ(folder, std::nullopt);
    }
}

TEST_F(SuperuserForNobody, HasTheMachinesFolders) {
    EXPECT_EQ(KZLocalPaths::prefsDirectory(UserDomain::no), "/Library/Preferences");
    EXPECT_EQ(KZLocalPaths::appSupportDirectory(UserDomain::no), "/Library/Application Support");
    EXPECT_EQ(KZLocalPaths::logDirectory(UserDomain::no), "/Library/Logs");
    EXPECT_EQ(KZLocalPaths::applicationDirectory(UserDomain::no), "/Applications");
    EXPECT_EQ(KZLocalPaths::systemLibraryDirectory(), "/System/Library");
    EXPECT_EQ(KZLocalPaths::localDocumentationDirectory(), "/Library/Documentation");
    EXPECT_TRUE(std::filesystem::is_directory(KZLocalPaths::tempDirectory()));
    EXPECT_EQ(kz::deletingLastPathComponent(KZLocalPaths::tempFile()), KZLocalPaths::tempDirectory());
}

TEST_F(SuperuserForNobody, ProtectsNoMoreThanTheSystem) {
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/"));
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory("/Library/Preferences"));
    EXPECT_FALSE(KZLocalPaths::isPathSystemDirectory("/root/Library"));
}

TEST_F(SuperuserForNobody, TrashesNothingAndTheItemStays) {
    const auto file = add("file");
    EXPECT_FALSE(KZFileManager::trashFile(file));
    EXPECT_FALSE(KZFileManager::trashFile(file, ShouldAuth::no));
    EXPECT_FALSE(KZFileManager::trashFile(file, std::chrono::seconds{10}));
    EXPECT_FALSE(KZFileManager::trashDirectoryContents(disk.path()));
    EXPECT_FALSE(session().authTrashFile(file));
    EXPECT_FALSE(session().authTrashFile(file, DeleteOnRootAccount::yes));
    EXPECT_FALSE(session().authTrashFolderContents(disk.path()));
    EXPECT_EQ(contentsOf(file), "contents");
    for (const auto& line : console.lines()) {
        EXPECT_EQ(line, "Error in authMoveFile: new path is null");
    }
}

TEST_F(SuperuserForNobody, CopiesNothingToAFolderThatNobodyHas) {
    const auto file = add("file");
    testing::internal::CaptureStdout();
    EXPECT_FALSE(KZFileManager::copyFile(file, KZLocalPaths::prefsDirectory(UserDomain::yes)));
    EXPECT_FALSE(KZFileManager::copyFile(file, KZLocalPaths::documentDirectory(UserDomain::yes), ShouldAuth::no));
    EXPECT_FALSE(KZFileManager::copyFile(file, KZLocalPaths::userDirectory(), std::chrono::seconds{10}));
    EXPECT_FALSE(session().authCopyFile(file, KZLocalPaths::userDirectory()));
    EXPECT_FALSE(session().authMoveFile(file, KZLocalPaths::trashDirectory()));
    KZLog::finishWriting();
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                HasSubstr("Error copying file " + file + ": destination path is nil"));
    EXPECT_TRUE(stands(file));
}

TEST_F(SuperuserForNobody, KeepsNoLog) {
    testing::internal::CaptureStdout();
    KZLog::createNewLog("Superuser");
    KZLog::finishWriting();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Unable to create folder (null).\n");
    EXPECT_THAT(KZLog::availableLogs(), IsEmpty());
}

TEST_F(SuperuserForNobody, DoesEverythingElse) {
    const auto file = add("file");
    EXPECT_TRUE(KZFileManager::createDirectory(disk / "a/b", std::chrono::seconds{10}));
    EXPECT_TRUE(KZFileManager::copyFile(file, disk / "a/b/copy", std::chrono::seconds{10}));
    EXPECT_TRUE(KZFileManager::moveFile(disk / "a/b/copy", disk / "moved", std::chrono::seconds{10}));
    EXPECT_TRUE(KZFileManager::touchFile(disk / "moved"));
    EXPECT_EQ(contentsOf(disk / "moved"), "contents");
    EXPECT_TRUE(KZFileManager::removeFile(disk / "moved", std::chrono::seconds{10}));
    EXPECT_FALSE(stands(disk / "moved"));
}

TEST_F(SuperuserForNobody, NeedsNoSession) {
    EXPECT_TRUE(session().isAuthorized());
    EXPECT_TRUE(session().canAuthorize());
    EXPECT_TRUE(session().authStart());
    EXPECT_TRUE(session().authStartWithUser("grace", "password"));
    EXPECT_EQ(session().authRef(), nullptr);
    EXPECT_EQ(session().userDirectory(), std::nullopt);
    session().authEnd();
    EXPECT_TRUE(session().isAuthorized());
    EXPECT_THAT(authorization.requests, IsEmpty());
}

TEST_F(SuperuserForNobody, RunsTheToolsItself) {
    const auto file = add("file");
    add("folder/sub/file");
    EXPECT_TRUE(session().authCreateDir(disk / "made/below"));
    EXPECT_TRUE(comesTrue([&] { return stands(disk / "made/below"); }));
    EXPECT_TRUE(session().authCopyFile(file, disk / "made/copy"));
    EXPECT_TRUE(comesTrue([&] { return contentsOf(disk / "made/copy") == "contents"; }));
    EXPECT_TRUE(session().authMoveFile(file, disk / "made/moved"));
    EXPECT_TRUE(comesTrue([&] { return !stands(file) && stands(disk / "made/moved"); }));
    EXPECT_TRUE(session().authMoveFolderContents(disk / "folder", disk / "made/below"));
    EXPECT_TRUE(comesTrue([&] { return stands(disk / "made/below/sub/file"); }));
    EXPECT_TRUE(session().authTrashFolderContents(disk / "made", DeleteOnRootAccount::yes));
    EXPECT_TRUE(comesTrue([&] { return std::filesystem::is_empty(disk / "made"); }));
    EXPECT_TRUE(session().authRemoveFile(disk / "made"));
    EXPECT_TRUE(comesTrue([&] { return !stands(disk / "made"); }));
    EXPECT_EQ(session().authExecTask("/bin/false", {}, Async::no), 0);
    EXPECT_EQ(session().authExecTask(disk / "missing", {}, Async::no), -2);
    EXPECT_THAT(authorization.executions, IsEmpty());
}

TEST_F(SuperuserForNobody, NeedsNoHostThatGivesRights) {
    auto host = makeHost();
    host.authorization = nullptr;
    const platform::ScopedHost scope(host);
    const KZAuthorizationReset fresh;
    EXPECT_TRUE(session().authStart());
    EXPECT_TRUE(session().authCreateDir(disk / "made"));
    EXPECT_TRUE(comesTrue([&] { return stands(disk / "made"); }));
    session().authEnd();
}

// Somebody asked for the superuser's rights. Her account is known to this test alone.
class SuperuserForSomebody : public SuperuserOnTheHost {
protected:
    void SetUp() override {
        SuperuserOnTheHost::SetUp();
        if (IsSkipped()) {
            return;
        }
        std::filesystem::create_directories(home + "/Library");
        ASSERT_EQ(::chown(home.c_str(), userNumber, userNumber), 0);
        const std::string accounts = disk / "passwd";
        writeFile(accounts, contentsOf("/etc/passwd") + "\n" + userName + ":x:1234:1234::" + home + ":/bin/sh\n");
        ASSERT_TRUE(mounts->replace("/etc/passwd", accounts));
        m_asked.emplace("SUDO_UID", std::to_string(userNumber));
        if (KZLocalPaths::userDirectory() != home) {
            GTEST_SKIP() << "accounts do not come from /etc/passwd here";
        }
    }
    void TearDown() override {
        EXPECT_EQ(authorization.created, 0);
        EXPECT_THAT(authorization.executions, IsEmpty());
        SuperuserOnTheHost::TearDown();
    }
    static uid_t ownerOf(const std::string& path) {
        struct stat status {};
        return ::lstat(path.c_str(), &status) == 0 ? status.st_uid : static_cast<uid_t>(-1);
    }

    const std::string home = disk / "home";
    const std::string trash = home + "/.Trash";

private:
    std::optional<fakes::ScopedEnvironment> m_asked;
};

TEST_F(SuperuserForSomebody, MeansHerFoldersAndNeverHisOwn) {
    EXPECT_EQ(KZLocalPaths::username(), userName);
    EXPECT_EQ(KZLocalPaths::prefsDirectory(UserDomain::yes), home + "/Library/Preferences");
    EXPECT_EQ(KZLocalPaths::desktopDirectory(), home + "/Desktop");
    EXPECT_EQ(KZLocalPaths::trashDirectory(), trash);
    EXPECT_EQ(KZLocalPaths::prefsDirectory(UserDomain::no), "/Library/Preferences");
    EXPECT_TRUE(KZLocalPaths::isPathSystemDirectory(home, ExactMatch::yes));
}

TEST_F(SuperuserForSomebody, TrashesIntoHerTrash) {
    const auto file = add("place/file");
    EXPECT_TRUE(KZFileManager::trashFile(file, std::chrono::seconds{10}));
    EXPECT_EQ(contentsOf(trash + "/file"), "contents");
    EXPECT_EQ(ownerOf(home + "/.local/share/Trash/info/file.trashinfo"), userNumber);
}

TEST_F(SuperuserForSomebody, TrashesIntoHerTrashWithTheSystemsToolToo) {
    std::filesystem::create_directory(trash);
    const auto file = add("place/file");
    EXPECT_TRUE(session().authTrashFile(file));
    EXPECT_TRUE(comesTrue([&] { return contentsOf(trash + "/file") == "contents"; }));
    EXPECT_FALSE(stands(file));
}

// A dangling link does not count as there, so that its name is the one that is meant.
TEST_F(SuperuserForSomebody, DeletesWhatStandsAtTheNameInHerTrashAndLeavesTheItem) {
    const auto file = add("place/file", "stays");
    std::filesystem::create_directory(trash);
    std::filesystem::create_symlink("nowhere", trash + "/file");
    EXPECT_TRUE(session().authTrashFile(file, DeleteOnRootAccount::yes));
    EXPECT_TRUE(comesTrue([&] { return !stands(trash + "/file"); }));
    EXPECT_EQ(contentsOf(file), "stays");
}

// A name that is taken is stamped first, so that it is the stamped name at which something would be deleted.
TEST_F(SuperuserForSomebody, KeepsWhatLiesInHerTrash) {
    const auto file = add("place/file", "stays");
    add("home/.Trash/file", "older");
    EXPECT_TRUE(session().authTrashFile(file, DeleteOnRootAccount::yes));
    EXPECT_FALSE(comesTrue([&] { return !stands(file) || !stands(trash + "/file"); }, 30));
}

TEST_F(SuperuserForSomebody, CopiesToHerFolders) {
    const auto file = add("file");
    const auto preferences = KZLocalPaths::prefsDirectory(UserDomain::yes);
    EXPECT_TRUE(KZFileManager::createDirectory(*preferences, std::chrono::seconds{10}));
    EXPECT_TRUE(KZFileManager::copyFile(file, *preferences + "/file", std::chrono::seconds{10}));
    EXPECT_EQ(contentsOf(home + "/Library/Preferences/file"), "contents");
}

TEST_F(SuperuserForSomebody, IsLedNowhereByALinkInHerHome) {
    std::filesystem::create_directory(disk / "etc");
    std::filesystem::create_symlink(disk / "etc", trash);
    std::filesystem::create_symlink(disk / "etc", home + "/.local");
    const auto file = add("place/file");
    EXPECT_TRUE(KZFileManager::trashFile(file));
    EXPECT_EQ(contentsOf(disk / ".Trash-1234/files/file"), "contents");
    EXPECT_TRUE(std::filesystem::is_empty(disk / "etc"));
}

}  // namespace
