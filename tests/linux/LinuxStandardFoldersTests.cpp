#include "platform/linux/services/LinuxStandardFolders.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tests/fakes/FakeIdentity.h"
#include "tests/fakes/ScopedEnvironment.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

using platform::FolderDomain;
using platform::FolderKind;
using Paths = std::vector<std::string>;

class LinuxFolders : public testing::Test {
protected:
    LinuxFolders() { m_identity.home = m_home.path(); }

    void writeUserDirs(const std::string& folder, const std::string& text) {
        std::filesystem::create_directories(folder);
        std::ofstream(folder + "/user-dirs.dirs") << text;
    }
    std::string user(FolderKind kind) { return m_folders.searchPaths(kind, FolderDomain::user).at(0); }
    Paths local(FolderKind kind) { return m_folders.searchPaths(kind, FolderDomain::local); }
    Paths system(FolderKind kind) { return m_folders.searchPaths(kind, FolderDomain::system); }

    fakes::TemporaryFolder m_home;
    fakes::FakeIdentity m_identity;
    fakes::ScopedEnvironment m_config{"XDG_CONFIG_HOME", std::nullopt};
    fakes::ScopedEnvironment m_cache{"XDG_CACHE_HOME", std::nullopt};
    fakes::ScopedEnvironment m_temporary{"TMPDIR", std::nullopt};
    platform::linux_host::LinuxStandardFolders m_folders{m_identity};
};

TEST_F(LinuxFolders, OfTheUserLieInHisHome) {
    EXPECT_EQ(user(FolderKind::applications), m_home / "Applications");
    EXPECT_EQ(user(FolderKind::adminApplications), m_home / "Applications/Utilities");
    EXPECT_EQ(user(FolderKind::library), m_home / "Library");
    EXPECT_EQ(user(FolderKind::documentation), m_home / "Library/Documentation");
    EXPECT_EQ(user(FolderKind::caches), m_home / "Library/Caches");
    EXPECT_EQ(user(FolderKind::applicationSupport), m_home / "Library/Application Support");
    EXPECT_EQ(user(FolderKind::documents), m_home / "Documents");
    EXPECT_EQ(user(FolderKind::desktop), m_home / "Desktop");
    EXPECT_EQ(user(FolderKind::movies), m_home / "Movies");
}

TEST_F(LinuxFolders, OfTheMachineLieAtTheRoot) {
    EXPECT_EQ(local(FolderKind::applications), Paths{"/Applications"});
    EXPECT_EQ(local(FolderKind::adminApplications), Paths{"/Applications/Utilities"});
    EXPECT_EQ(local(FolderKind::library), Paths{"/Library"});
    EXPECT_EQ(local(FolderKind::documentation), Paths{"/Library/Documentation"});
    EXPECT_EQ(local(FolderKind::caches), Paths{"/Library/Caches"});
    EXPECT_EQ(local(FolderKind::applicationSupport), Paths{"/Library/Application Support"});
}

TEST_F(LinuxFolders, OfDocumentsDesktopAndMoviesAreNotTheMachines) {
    for (const auto kind : {FolderKind::documents, FolderKind::desktop, FolderKind::movies}) {
        EXPECT_EQ(local(kind), Paths{});
    }
}

TEST_F(LinuxFolders, OfTheSystemAreItsLibraryOnly) {
    EXPECT_EQ(system(FolderKind::library), Paths{"/System/Library"});
    EXPECT_EQ(system(FolderKind::applications), Paths{});
    EXPECT_EQ(system(FolderKind::caches), Paths{});
}

TEST_F(LinuxFolders, OfAnUnknownKindOrDomainDoNotExist) {
    EXPECT_EQ(m_folders.searchPaths(static_cast<FolderKind>(99), FolderDomain::user), Paths{});
    EXPECT_EQ(m_folders.searchPaths(FolderKind::library, static_cast<FolderDomain>(4)), Paths{});
}

TEST_F(LinuxFolders, FollowTheDesktopsChoice) {
    writeUserDirs(
        m_home / ".config",
        "XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\nXDG_DESKTOP_DIR=\"/srv/desk\"\nXDG_VIDEOS_DIR=\"$HOME/Video\"\n");

    EXPECT_EQ(user(FolderKind::documents), m_home / "Dokumente");
    EXPECT_EQ(user(FolderKind::desktop), "/srv/desk");
    EXPECT_EQ(user(FolderKind::movies), m_home / "Video");
    EXPECT_EQ(user(FolderKind::library), m_home / "Library");
}

TEST_F(LinuxFolders, FollowTheDesktopsChoiceWhereverItsSettingsAre) {
    const fakes::ScopedEnvironment elsewhere("XDG_CONFIG_HOME", m_home / "settings");
    writeUserDirs(m_home / "settings", "XDG_DOCUMENTS_DIR=\"$HOME/Texts\"\n");

    EXPECT_EQ(user(FolderKind::documents), m_home / "Texts");
}

TEST_F(LinuxFolders, DoNotFollowSettingsOfARelativePath) {
    const fakes::ScopedEnvironment elsewhere("XDG_CONFIG_HOME", "settings");

    EXPECT_EQ(user(FolderKind::documents), m_home / "Documents");
}

TEST_F(LinuxFolders, SurviveSettingsThatAreAFolderOrGarbage) {
    std::filesystem::create_directories(m_home / ".config/user-dirs.dirs");
    EXPECT_EQ(user(FolderKind::documents), m_home / "Documents");

    std::filesystem::remove(m_home / ".config/user-dirs.dirs");
    writeUserDirs(m_home / ".config", std::string(1'000'000, '='));
    EXPECT_EQ(user(FolderKind::documents), m_home / "Documents");
}

TEST_F(LinuxFolders, OfTheSuperuserLieBelowTheNameOfHisHomeThatCallersKnow) {
    m_identity.uid = 0;
    writeUserDirs(m_home / ".config", "XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n");

    EXPECT_EQ(user(FolderKind::library), "/var/root/Library");
    EXPECT_EQ(user(FolderKind::documents), "/var/root/Documents");
    EXPECT_EQ(local(FolderKind::library), Paths{"/Library"});
    EXPECT_EQ(system(FolderKind::library), Paths{"/System/Library"});
}

TEST_F(LinuxFolders, HaveNoDoubleSlashForAHomeThatIsTheRoot) {
    m_identity.home = "/";

    EXPECT_EQ(user(FolderKind::library), "/Library");
    EXPECT_EQ(user(FolderKind::documents), "/Documents");
}

TEST_F(LinuxFolders, ForTemporaryFilesAreTmpUnlessTheEnvironmentSaysOtherwise) {
    EXPECT_EQ(m_folders.temporaryFolder(), "/tmp");
    for (const auto& [value, folder] : std::map<std::string, std::string>{
             {"/var/tmp", "/var/tmp"}, {"/var/tmp//", "/var/tmp"}, {"/", "/"}, {"relative", "/tmp"}, {"", "/tmp"}}) {
        const fakes::ScopedEnvironment chosen("TMPDIR", value);
        EXPECT_EQ(m_folders.temporaryFolder(), folder) << value;
    }
}

TEST_F(LinuxFolders, ForCachesOfTheSystemAreInTheHomeUnlessTheEnvironmentSaysOtherwise) {
    EXPECT_EQ(m_folders.userCacheFolder(), m_home / ".cache");

    const fakes::ScopedEnvironment chosen("XDG_CACHE_HOME", "/var/cache/ada");
    EXPECT_EQ(m_folders.userCacheFolder(), "/var/cache/ada");
}

}  // namespace
