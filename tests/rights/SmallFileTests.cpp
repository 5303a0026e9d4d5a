#include "platform/linux/rights/helper/SmallFile.h"

#include <linux/posix_acl.h>
#include <linux/posix_acl_xattr.h>
#include <sys/wait.h>
#include <sys/xattr.h>

#include <spawn.h>
#include <algorithm>
#include <array>
#include <tuple>

#include "tests/rights/RootsFolder.h"

namespace {

using platform::rights::copiesSmallFile;
using tests::alice;

class CopyingASmallFile : public tests::RootsFolder {
protected:
    static bool copies(const std::string& source, const std::string& destination) {
        return copiesSmallFile({"/bin/cp", "-f", "-p", "-R", source, destination});
    }
    static bool exists(const std::string& path) {
        struct stat item {};
        return ::lstat(path.c_str(), &item) == 0;
    }
    static std::size_t entriesOf(const std::string& folder) {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator()));
    }
    static auto attributesOf(const std::string& path) {
        struct stat item {};
        EXPECT_EQ(::lstat(path.c_str(), &item), 0) << path;
        return std::tuple(item.st_mode, item.st_uid, item.st_gid, item.st_size, item.st_mtim.tv_sec,
                          item.st_mtim.tv_nsec, item.st_nlink);
    }
    static void runTool(const std::string& source, const std::string& destination) {
        std::array<std::string, 6> words{"/bin/cp", "-f", "-p", "-R", source, destination};
        std::array<char*, 7> arguments{};
        std::ranges::transform(words, arguments.begin(), [](std::string& word) { return word.data(); });
        pid_t child = -1;
        ASSERT_EQ(::posix_spawn(&child, arguments[0], nullptr, nullptr, arguments.data(), environ), 0);
        int status = -1;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_EQ(status, 0);
    }
    // With one entry for another user, which the mode alone cannot say.
    static int setAccessControlList(const std::string& path, const char* kind) {
        constexpr auto nobody = static_cast<unsigned>(ACL_UNDEFINED_ID);
        struct List {
            posix_acl_xattr_header header{.a_version = POSIX_ACL_XATTR_VERSION};
            std::array<posix_acl_xattr_entry, 5> entries{{{ACL_USER_OBJ, 6, nobody},
                                                          {ACL_USER, 4, tests::bob},
                                                          {ACL_GROUP_OBJ, 4, nobody},
                                                          {ACL_MASK, 4, nobody},
                                                          {ACL_OTHER, 0, nobody}}};
        } list;
        return ::setxattr(path.c_str(), kind, &list, sizeof list, 0);
    }
};

TEST_F(CopyingASmallFile, LeavesWhatTheToolLeaves) {
    for (const mode_t mode : {0644U, 0400U, 0755U, 04755U, 06755U, 01644U, 0000U}) {
        for (const uid_t owner : {uid_t{0}, alice}) {
            const auto name = std::to_string(mode) + "-" + std::to_string(owner);
            const auto source = makeFile("source-" + name, owner, "a text of some length");
            ASSERT_EQ(::chmod(source.c_str(), mode), 0);
            const std::array<timespec, 2> times{
                {{.tv_sec = 1'000'000, .tv_nsec = 5}, {.tv_sec = 2'000'000'000, .tv_nsec = 123'456'789}}};
            ASSERT_EQ(::utimensat(AT_FDCWD, source.c_str(), times.data(), 0), 0);
            ASSERT_TRUE(copies(source, at("ours-" + name)));
            runTool(source, at("tools-" + name));
            EXPECT_EQ(attributesOf(at("ours-" + name)), attributesOf(at("tools-" + name))) << name;
            EXPECT_EQ(textOf(at("ours-" + name)), "a text of some length");
        }
    }
}

TEST_F(CopyingASmallFile, TakesFilesFromNothingToOneMebibyte) {
    for (const std::size_t size :
         {std::size_t{0}, std::size_t{1}, (std::size_t{64} << 10U) + 1, std::size_t{1} << 20U}) {
        const std::string text(size, 'x');
        const auto name = std::to_string(size);
        EXPECT_TRUE(copies(makeFile(name, alice, text), at("copy of " + name))) << size;
        EXPECT_EQ(textOf(at("copy of " + name)), text);
    }
    EXPECT_FALSE(copies(makeFile("larger", alice, std::string((1U << 20U) + 1, 'x')), at("copy")));
    EXPECT_FALSE(exists(at("copy")));
}

TEST_F(CopyingASmallFile, TakesNamesAsTheyAre) {
    for (const char* name : {"-rf", "a\nb", "  ", "\xff\xfe", "@helper@"}) {
        EXPECT_TRUE(copies(makeFile("source", 0, name), makeFolder("folder") + "/" + name)) << name;
        EXPECT_EQ(textOf(at("folder/") + name), name);
        std::filesystem::remove_all(at("folder"));
    }
}

TEST_F(CopyingASmallFile, LeavesEveryOtherCommandToItsTool) {
    const auto source = makeFile("source");
    EXPECT_FALSE(copiesSmallFile({}));
    EXPECT_FALSE(copiesSmallFile({"/bin/cp", source, at("copy")}));
    EXPECT_FALSE(copiesSmallFile({"/bin/cp", "-f", "-p", "-R", source}));
    EXPECT_FALSE(copiesSmallFile({"/bin/cp", "-f", "-p", "-R", source, source, at("copy")}));
    EXPECT_FALSE(copiesSmallFile({"/bin/cp", "-f", "-p", "-r", source, at("copy")}));
    EXPECT_FALSE(copiesSmallFile({"/bin/mv", "-f", "-p", "-R", source, at("copy")}));
    EXPECT_FALSE(copiesSmallFile({"/usr/local/bin/cp", "-f", "-p", "-R", source, at("copy")}));
    EXPECT_FALSE(exists(at("copy")));
}

TEST_F(CopyingASmallFile, LeavesWhatStandsThereAlone) {
    const auto source = makeFile("source", 0, "new");
    EXPECT_FALSE(copies(source, makeFile("file", 0, "old")));
    EXPECT_EQ(textOf(at("file")), "old");
    EXPECT_FALSE(copies(source, makeFolder("folder")));
    EXPECT_EQ(entriesOf(at("folder")), 0U);
    EXPECT_FALSE(copies(source, makeLink("dangling", at("nowhere"))));
    EXPECT_FALSE(exists(at("nowhere")));
    EXPECT_FALSE(copies(source, source));
    EXPECT_EQ(textOf(source), "new");
}

TEST_F(CopyingASmallFile, LeavesWhatIsNoPlainFileToTheTool) {
    const auto file = makeFile("file");
    ASSERT_EQ(::mkfifo(at("fifo").c_str(), 0600), 0);
    ASSERT_EQ(::truncate(makeFile("holes").c_str(), 1 << 19), 0);
    for (const auto& source : {makeFolder("folder"), makeLink("link", file), at("fifo"), at("holes"), at("missing"),
                               std::string("/dev/null")}) {
        EXPECT_FALSE(copies(source, at("copy"))) << source;
        EXPECT_FALSE(exists(at("copy"))) << source;
    }
}

TEST_F(CopyingASmallFile, LeavesPathsThatStrayToTheTool) {
    const auto source = makeFile("source");
    makeFolder("folder");
    for (const auto& path : {at("folder/"), at("folder/../copy"), at("missing/copy"), at("source/copy"),
                             std::string("copy"), std::string("/"), std::string()}) {
        EXPECT_FALSE(copies(source, path)) << path;
        EXPECT_FALSE(copies(path, at("copy"))) << path;
    }
    EXPECT_FALSE(exists(at("copy")));
}

TEST_F(CopyingASmallFile, IsNotLedAstrayByALinkOfAnOrdinaryUser) {
    const auto source = makeFile("source");
    makeFolder("alices", alice);
    makeFolder("system");
    makeLink("alices/folder", at("system"), alice);
    EXPECT_FALSE(copies(source, at("alices/folder/copy")));
    EXPECT_EQ(entriesOf(at("system")), 0U);
    makeFile("system/secret", 0, "secret");
    EXPECT_FALSE(copies(at("alices/folder/secret"), at("copy")));
    makeLink("alices/link", at("system/secret"), alice);
    EXPECT_FALSE(copies(at("alices/link"), at("copy")));
    EXPECT_FALSE(exists(at("copy")));
}

TEST_F(CopyingASmallFile, FollowsALinkOfTheSystem) {
    makeFolder("folder");
    makeLink("link", at("folder"));
    EXPECT_TRUE(copies(makeFile("source", 0, "text"), at("link/copy")));
    EXPECT_EQ(textOf(at("folder/copy")), "text");
}

TEST_F(CopyingASmallFile, LeavesAccessControlListsToTheTool) {
    const auto source = makeFile("source");
    if (setAccessControlList(source, "system.posix_acl_access") != 0) {
        GTEST_SKIP() << "this file system has no access control lists";
    }
    EXPECT_FALSE(copies(source, at("copy")));
    ASSERT_EQ(setAccessControlList(makeFolder("folder"), "system.posix_acl_default"), 0);
    EXPECT_FALSE(copies(makeFile("plain"), at("folder/copy")));
    EXPECT_EQ(entriesOf(at("folder")), 0U);
}

TEST_F(CopyingASmallFile, LeavesNothingBehindWhereNothingCanBeMade) {
    EXPECT_FALSE(copies(makeFile("source"), "/proc/copy"));
    EXPECT_FALSE(exists("/proc/copy"));
}

}  // namespace
