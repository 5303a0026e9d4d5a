// Which folders the privileged commands refuse. Nothing here runs or touches anything real.
#include "lib/KZAuthorization.h"
#include "tests/fakes/FakeFileManager.h"
#include "tests/fakes/FakeProcesses.h"
#include "tests/lib/FilesFixture.h"

using ::testing::Each;
using ::testing::IsEmpty;

namespace {

// Takes no notice of a slash at the end of a path, as real files do.
class FilesInMemory : public fakes::FakeFileManager {
public:
    bool fileExists(const std::string& path) override { return FakeFileManager::fileExists(plain(path)); }
    std::optional<std::vector<platform::DirectoryEntry>> contentsOfDirectory(const std::string& path) override {
        return FakeFileManager::contentsOfDirectory(plain(path));
    }
    static std::string plain(const std::string& path) {
        return path.ends_with('/') ? path.substr(0, path.size() - 1) : path;
    }
};

class PrivilegedSystemFolders : public FilesFixture, public testing::WithParamInterface<unsigned> {
protected:
    PrivilegedSystemFolders() {
        identity.uid = GetParam();
        identity.home = "/home/ada";
        identity.console = "ada";
        identity.homes["ada"] = "/home/ada";
        folders.paths[{platform::FolderKind::library, platform::FolderDomain::user}] = {
            GetParam() == 0 ? "/var/root/Library" : "/home/ada/Library"};
        folders.paths[{platform::FolderKind::library, platform::FolderDomain::local}] = {"/Library"};
        folders.paths[{platform::FolderKind::library, platform::FolderDomain::system}] = {"/System/Library"};
        for (const char* tool : {"/bin/rm", "/bin/mv"}) {
            inMemory.addFile(tool);
            inMemory.setPermissions(tool, 0755);
        }
    }

    // How many tools the command started, with a file in the folder.
    std::size_t started(const std::string& path, const std::function<bool(KZAuthorization&)>& command, bool answer) {
        inMemory.addFile(FilesInMemory::plain(path) + "/entry");
        const std::size_t before = authorization.executions.size() + launches.made().size();
        EXPECT_EQ(command(*KZAuthorization::sharedController()), answer) << path;
        return authorization.executions.size() + launches.made().size() - before;
    }
    std::vector<std::size_t> startedByAll(const std::string& path, bool answer) {
        return {started(
                    path, [&](auto& rights) { return rights.authRemoveFile(path); }, answer),
                started(
                    path, [&](auto& rights) { return rights.authTrashFile(path); }, answer),
                started(
                    path, [&](auto& rights) { return rights.authMoveFile(path, "/elsewhere"); }, answer),
                started(
                    path, [&](auto& rights) { return rights.authTrashFolderContents(path); }, answer),
                started(
                    path, [&](auto& rights) { return rights.authMoveFolderContents(path, "/elsewhere"); }, answer)};
    }
    void expectRefused(const std::string& path) {
        EXPECT_THAT(startedByAll(path, false), Each(0U)) << path;
        const auto lines = console.lines();
        EXPECT_EQ(std::ranges::count_if(lines,
                                        [&](const std::string& line) {
                                            return line.ends_with(" " + path + " because it is a system directory.");
                                        }),
                  5)
            << path;
    }
    void expectAllowed(const std::string& path) {
        EXPECT_THAT(startedByAll(path, true), Each(1U)) << path;
        EXPECT_THAT(console.lines(), IsEmpty()) << path;
    }

    FilesInMemory inMemory;
    fakes::FakeProcesses launches;

private:
    platform::Host hostInMemory() {
        auto host = makeHost();
        host.files = &inMemory;
        host.processes = &launches;
        return host;
    }
    platform::ScopedHost m_inMemory{hostInMemory()};
};

TEST_P(PrivilegedSystemFolders, AreRefusedByName) {
    for (const char* path :
         {"/usr", "/var", "/bin", "/sbin", "/System", "/Users/Shared", "/Library", "/home/ada", "/home/ada/Library",
          "/home/ada/Library/Preferences", "/Library/Preferences", "/System/Library"}) {
        expectRefused(path);
    }
}

TEST_P(PrivilegedSystemFolders, IncludeTheRoot) {
    EXPECT_FALSE(KZAuthorization::sharedController()->authRemoveFile("/"));
    EXPECT_FALSE(KZAuthorization::sharedController()->authTrashFile("/"));
    EXPECT_FALSE(KZAuthorization::sharedController()->authMoveFile("/", "/elsewhere"));
    EXPECT_FALSE(KZAuthorization::sharedController()->authTrashFolderContents("/"));
    EXPECT_FALSE(KZAuthorization::sharedController()->authMoveFolderContents("/", "/elsewhere"));
    EXPECT_THAT(authorization.executions, IsEmpty());
    EXPECT_THAT(launches.made(), IsEmpty());
}

// A slash at the end takes the character before it along.
TEST_P(PrivilegedSystemFolders, AreNotKnownWithASlashAtTheEnd) {
    for (const char* path : {"/usr/", "/var/", "/sbin/", "/System/", "/Users/Shared/", "/Library/", "/home/ada/"}) {
        expectAllowed(path);
    }
}

TEST_P(PrivilegedSystemFolders, AreSeenInANameThatIsOneCharacterLongerAndEndsWithASlash) {
    for (const char* path : {"/usrx/", "/varx/", "/binx/", "/Systemx/", "/Users/Shared1/", "/home/adam/"}) {
        expectRefused(path);
    }
}

TEST_P(PrivilegedSystemFolders, MayBeWorkedIn) {
    for (const char* path : {"/usr/share/plugin", "/System/Volumes", "/var/plugin", "/Library/Audio"}) {
        expectAllowed(path);
    }
}

INSTANTIATE_TEST_SUITE_P(OfEverybody, PrivilegedSystemFolders, testing::Values(0U, 1000U),
                         [](const auto& user) { return user.param == 0 ? "Superuser" : "OrdinaryUser"; });

}  // namespace
