#include "platform/linux/services/files/ItemRemover.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/resource.h>

#include "platform/posix/Descriptor.h"
#include "tests/linux/FilesFixture.h"

namespace {

using platform::linux_host::findRemovalObstacle;
using platform::linux_host::Removal;
using platform::linux_host::removeTree;

using Removing = FilesFixture;

TEST_F(Removing, NeverFollowsALinkToAFolder) {
    makeFolder("kept/sub");
    write("kept/file", "x");
    makeFolder("tree");
    link("tree/link", "../kept");
    link("link", "kept");
    EXPECT_FALSE(removeTree(at("tree"), Removal::asPermitted));
    EXPECT_FALSE(removeTree(at("link/"), Removal::asPermitted));
    EXPECT_FALSE(isThere("tree"));
    EXPECT_FALSE(isThere("link"));
    EXPECT_TRUE(isThere("kept/sub"));
    EXPECT_EQ(read("kept/file"), "x");
}

TEST_F(Removing, RemovesDanglingLinksAndPipes) {
    link("dangling", "nowhere");
    ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
    EXPECT_FALSE(removeTree(at("dangling"), Removal::asPermitted));
    EXPECT_FALSE(removeTree(at("pipe"), Removal::asPermitted));
    EXPECT_TRUE(names(".").empty());
}

TEST_F(Removing, FolderOfTenThousandEntriesGoes) {
    makeFolder("wide");
    for (int i = 0; i < 10'000; ++i) {
        write("wide/" + std::to_string(i), "");
    }
    EXPECT_FALSE(removeTree(at("wide"), Removal::asPermitted));
    EXPECT_FALSE(isThere("wide"));
}

TEST_F(Removing, DeepTreeGoesWithFewDescriptors) {
    const fakes::TemporaryFolder place(::access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp");
    {
        platform::posix::Descriptor folder(::open(place.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        for (int level = 0; level < 5'000; ++level) {
            ASSERT_EQ(::mkdirat(folder.get(), "d", 0755), 0);
            ASSERT_EQ(::mkdirat(folder.get(), "e", 0755), 0);
            folder.reset(::openat(folder.get(), "d", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
        }
    }
    rlimit usual{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &usual), 0);
    const rlimit few{.rlim_cur = 64, .rlim_max = usual.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    const auto failed = removeTree(place / "d", Removal::asPermitted);
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &usual), 0);
    EXPECT_FALSE(failed) << failed->description;
    EXPECT_FALSE(std::filesystem::exists(place / "d"));
}

TEST_F(Removing, ReadOnlyFolderKeepsItsContentsUnlessItMayBeOpened) {
    if (isSuperuser()) {
        GTEST_SKIP() << "modes do not stop the superuser";
    }
    makeFolder("tree/closed");
    write("tree/closed/file", "x");
    setMode("tree/closed", 0555);
    const auto failed = removeTree(at("tree"), Removal::asPermitted);
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->code, EACCES);
    EXPECT_NE(failed->description.find(at("tree/closed/file")), std::string::npos);
    EXPECT_EQ(read("tree/closed/file"), "x");
    setMode("tree/closed", 0);
    EXPECT_FALSE(removeTree(at("tree"), Removal::openingFolders));
    EXPECT_FALSE(isThere("tree"));
}

TEST_F(Removing, DotsThatStandForAnotherFolderAreRefused) {
    makeFolder("folder/sub");
    write("folder/file", "x");
    for (const char* path : {"folder/sub/..", "folder/sub/../", "folder/."}) {
        const auto failed = removeTree(at(path), Removal::asPermitted);
        EXPECT_TRUE(failed && failed->code == EINVAL) << path;
    }
    EXPECT_TRUE(isThere("folder/file"));
    EXPECT_TRUE(isThere("folder/sub"));
}

TEST_F(Removing, PathsThatAreNoneAreRefused) {
    write("file", "x");
    EXPECT_EQ(removeTree("", Removal::asPermitted)->code, ENOENT);
    EXPECT_EQ(removeTree(at(std::string("file\0x", 6)), Removal::asPermitted)->code, EINVAL);
    EXPECT_TRUE(isThere("file"));
}

TEST_F(Removing, ObstacleIsALockedFileDeepInside) {
    makeFolder("tree/sub");
    write("tree/sub/file", "x");
    EXPECT_FALSE(findRemovalObstacle(platform::linux_host::placeAt(at("tree"))));
    if (m_files.setImmutable(at("tree/sub/file"), true)) {
        GTEST_SKIP() << "no right to lock files, or no such flag here";
    }
    const auto obstacle = findRemovalObstacle(platform::linux_host::placeAt(at("tree")));
    EXPECT_FALSE(m_files.setImmutable(at("tree/sub/file"), false));
    ASSERT_TRUE(obstacle);
    EXPECT_EQ(obstacle->code, EPERM);
    EXPECT_NE(obstacle->description.find(at("tree/sub/file")), std::string::npos);
}

}  // namespace
