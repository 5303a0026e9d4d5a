#include "platform/posix/WholeFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <thread>

#include "tests/fakes/FolderFixture.h"

namespace {

using platform::posix::readWholeFile;
using platform::posix::replaceFile;

class WholeFile : public FolderFixture {};

TEST_F(WholeFile, ReplacementIsClosedToOthersUntilItIsComplete) {
    write("secret", "old");
    setMode("secret", 0600);
    const std::string contents(std::size_t{32} << 20U, 'x');
    std::atomic<bool> over{false};
    std::atomic<unsigned> granted{0};
    std::atomic<int> looks{0};
    std::thread observer([&] {
        while (!over) {
            for (const auto& name : names(".")) {
                struct stat status {};
                if (name.starts_with(".wickfield-") && ::lstat(at(name).c_str(), &status) == 0) {
                    granted |= status.st_mode & 0077U;
                    ++looks;
                }
            }
        }
    });
    for (int i = 0; i < 50 && looks < 10; ++i) {
        EXPECT_FALSE(replaceFile(at("secret"), contents));
    }
    over = true;
    observer.join();
    EXPECT_GE(looks, 10);
    EXPECT_EQ(granted, 0U);
    EXPECT_EQ(status("secret").st_mode & 0777U, 0600U);
}

TEST_F(WholeFile, NothingButFilesIsRead) {
    ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
    makeFolder("folder");
    EXPECT_EQ(readWholeFile(at("pipe"), 10), std::nullopt);
    EXPECT_EQ(readWholeFile(at("folder"), 10), std::nullopt);
    EXPECT_EQ(readWholeFile("/dev/zero", 10), std::nullopt);
}

TEST_F(WholeFile, NewFileHasTheModeThatTheMaskLeaves) {
    const mode_t mask = ::umask(027);
    EXPECT_FALSE(replaceFile(at("file"), "x"));
    ::umask(mask);
    EXPECT_EQ(status("file").st_mode & 0777U, 0640U);
}

TEST_F(WholeFile, DanglingLinkIsReplacedByTheFile) {
    link("link", "nowhere");
    EXPECT_FALSE(replaceFile(at("link"), "x"));
    EXPECT_TRUE(S_ISREG(status("link").st_mode));
    EXPECT_FALSE(isThere("nowhere"));
}

TEST_F(WholeFile, ReaderSeesTheOldContentsOrTheNewOnesWhole) {
    const std::string old(100'000, 'o');
    const std::string fresh(100'000, 'n');
    write("file", old);
    std::atomic<bool> done{false};
    std::atomic<int> torn{0};
    std::thread reader([&] {
        while (!done) {
            const auto text = readWholeFile(at("file"), 1'000'000);
            torn += text && (*text == old || *text == fresh) ? 0 : 1;
        }
    });
    for (int i = 0; i < 100; ++i) {
        EXPECT_FALSE(replaceFile(at("file"), i % 2 == 0 ? fresh : old));
    }
    done = true;
    reader.join();
    EXPECT_EQ(torn, 0);
}

TEST_F(WholeFile, IsReadUpToTheLimitAndNotBeyond) {
    write("file", "12345");
    EXPECT_EQ(readWholeFile(at("file"), 5), "12345");
    EXPECT_EQ(readWholeFile(at("file"), 4), std::nullopt);
    write("empty", "");
    EXPECT_EQ(readWholeFile(at("empty"), 0), "");
}

TEST_F(WholeFile, FailedReplacementLeavesTheOldContentsAndNothingBeside) {
    write("file", "old");
    makeFolder("folder");
    ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
    EXPECT_EQ(replaceFile(at("folder"), "x")->code, EISDIR);
    EXPECT_EQ(replaceFile(at("pipe"), "x")->code, EOPNOTSUPP);
    EXPECT_EQ(replaceFile(at("missing/file"), "x")->code, ENOENT);
    EXPECT_EQ(replaceFile(at("file/file"), "x")->code, ENOTDIR);
    EXPECT_EQ(replaceFile("", "x")->code, ENOENT);
    EXPECT_EQ(names(".").size(), 3U);
    EXPECT_EQ(read("file"), "old");
}

TEST_F(WholeFile, FailureNamesThePath) {
    EXPECT_EQ(replaceFile(at("missing/file"), "x")->description,
              "Cannot write “" + at("missing/file") + "”: No such file or directory");
}

TEST_F(WholeFile, LinkToAFileStaysAndItsFileIsReplaced) {
    makeFolder("folder");
    write("folder/file", "old");
    link("link", "folder/file");
    EXPECT_FALSE(replaceFile(at("link"), "new"));
    EXPECT_TRUE(S_ISLNK(status("link").st_mode));
    EXPECT_EQ(read("folder/file"), "new");
}

TEST_F(WholeFile, ReplacementKeepsOwnerAndGroupWhateverTheFolderGives) {
    if (!isSuperuser()) {
        GTEST_SKIP() << "needs two accounts";
    }
    constexpr uid_t user = 1234;
    makeFolder("folder");
    write("folder/his", "old");
    write("folder/own", "old");
    ASSERT_EQ(::chown(at("folder").c_str(), user, user), 0);
    ASSERT_EQ(::chown(at("folder/his").c_str(), user, user), 0);
    setMode("folder", 02755);  // what is made in it gets the folder's group
    EXPECT_FALSE(replaceFile(at("folder/his"), "new"));
    EXPECT_FALSE(replaceFile(at("folder/own"), "new"));
    EXPECT_EQ(status("folder/his").st_uid, user);
    EXPECT_EQ(status("folder/his").st_gid, user);
    EXPECT_EQ(status("folder/own").st_gid, ::getegid());
}

}  // namespace
