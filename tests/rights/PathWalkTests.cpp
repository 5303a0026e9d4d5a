#include "platform/linux/rights/helper/PathWalk.h"

#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

#include "tests/rights/RootsFolder.h"

namespace {

using platform::rights::isBelow;
using platform::rights::PathWalk;
using platform::rights::walk;
using tests::alice;
using tests::bob;
using Ends = PathWalk::Ends;

class WalkingToAnItem : public tests::RootsFolder {
protected:
    // The folder in which it ends, or the error as text.
    static std::string endOf(const std::string& path, Ends ends) {
        const auto found = walk(path, ends);
        if (const int* error = std::get_if<int>(&found)) {
            return ::strerrorname_np(*error);
        }
        const auto& folder = std::get<PathWalk>(found).folder;
        return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(folder.get())).string();
    }
    static PathWalk walked(const std::string& path, Ends ends = Ends::atFolder) {
        return std::get<PathWalk>(walk(path, ends));
    }
};

TEST_F(WalkingToAnItem, EndsInTheFolderThatItLiesIn) {
    makeFolder("folder");
    makeFile("folder/file");
    EXPECT_EQ(endOf(at("folder/file"), Ends::atParent), at("folder"));
    EXPECT_EQ(endOf(at("folder/file"), Ends::atFolder), at("folder"));
}

TEST_F(WalkingToAnItem, EndsInTheItemWhenThatIsAFolder) {
    makeFolder("folder");
    EXPECT_EQ(endOf(at("folder"), Ends::atFolder), at("folder"));
    EXPECT_EQ(endOf(at("folder/"), Ends::atFolder), at("folder"));
    EXPECT_EQ(endOf(at("folder"), Ends::atParent), top());
}

TEST_F(WalkingToAnItem, EndsWhereAMissingOneWouldBeMade) {
    makeFolder("folder");
    EXPECT_EQ(endOf(at("folder/new"), Ends::atFolder), at("folder"));
    EXPECT_EQ(endOf(at("folder/new"), Ends::atParent), at("folder"));
}

TEST_F(WalkingToAnItem, SaysThatAFolderOnTheWayIsMissing) {
    EXPECT_EQ(endOf(at("missing/new"), Ends::atFolder), "ENOENT");
    EXPECT_EQ(endOf(at("missing/new"), Ends::atParent), "ENOENT");
}

TEST_F(WalkingToAnItem, EndsInTheDeepestFolderThatExistsWhenTheRestIsToBeMade) {
    makeFolder("folder");
    EXPECT_EQ(endOf(at("folder/a/b/c/d"), Ends::atDeepest), at("folder"));
}

TEST_F(WalkingToAnItem, TellsWhereTheWayLeavesTheSuperusersOwnFolders) {
    makeFolder("home", alice);
    makeFolder("home/files", alice);
    makeLink("home/Trash", "files", alice);
    makeFolder("system");
    makeLink("system/link", at("home"));
    const auto found = walked(at("system/link/Trash/item"), Ends::atParent);
    ASSERT_TRUE(found.foreign);
    EXPECT_EQ(std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(found.foreign.get())), at("home"));
    EXPECT_EQ(found.beyondForeign, std::vector<std::string>{"Trash"});
    EXPECT_FALSE(walked(at("system/item"), Ends::atParent).foreign);
}

TEST_F(WalkingToAnItem, SaysThatAFileOnTheWayIsNoFolder) {
    makeFile("file");
    for (const auto ends : {Ends::atParent, Ends::atFolder, Ends::atDeepest}) {
        EXPECT_EQ(endOf(at("file/item"), ends), "ENOTDIR");
    }
}

TEST_F(WalkingToAnItem, RefusesPathsThatAreNotPlain) {
    for (const char* path : {"", "relative", "./relative", "/tmp/../etc", "/tmp/./x", "/..", "/tmp/.."}) {
        EXPECT_EQ(endOf(path, Ends::atFolder), "EINVAL") << path;
    }
}

TEST_F(WalkingToAnItem, TakesTheRootAsAFolderButNotAsAnItem) {
    EXPECT_EQ(endOf("/", Ends::atFolder), "/");
    EXPECT_EQ(endOf("/", Ends::atParent), "EINVAL");
    EXPECT_EQ(endOf("//", Ends::atParent), "EINVAL");
}

TEST_F(WalkingToAnItem, TakesNamesOfAnyBytes) {
    makeFolder("-rf");
    makeFolder("-rf/two\nlines");
    makeFolder("-rf/two\nlines/\xff\xfe and blank");
    EXPECT_EQ(endOf(at("-rf/two\nlines/\xff\xfe and blank/..."), Ends::atFolder),
              at("-rf/two\nlines/\xff\xfe and blank"));
}

TEST_F(WalkingToAnItem, SaysThatANameIsTooLong) {
    EXPECT_EQ(endOf(at(std::string(256, 'x') + "/y"), Ends::atFolder), "ENAMETOOLONG");
}

TEST_F(WalkingToAnItem, GoesDeeperThanTheSystemsLongestPath) {
    std::string path = top();
    const std::string name(100, 'd');
    platform::posix::Descriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY));
    for (int depth = 0; depth < 60; ++depth) {
        ASSERT_EQ(::mkdirat(folder.get(), name.c_str(), 0755), 0);
        folder.reset(::openat(folder.get(), name.c_str(), O_RDONLY | O_DIRECTORY));
        path += "/" + name;
    }
    const auto end = walked(path + "/item", Ends::atParent);
    EXPECT_TRUE(isBelow(end.folder, folder) && isBelow(folder, end.folder));
}

// Links

TEST_F(WalkingToAnItem, FollowsLinksThatAreTheSuperusersOwn) {
    makeFolder("target");
    makeLink("absolute", at("target"));
    makeLink("relative", "./target");
    makeLink("roundabout", "target/../target");
    for (const char* link : {"absolute", "relative", "roundabout"}) {
        EXPECT_EQ(endOf(at(link), Ends::atFolder), at("target")) << link;
        EXPECT_EQ(endOf(at(link) + "/item", Ends::atParent), at("target")) << link;
    }
}

TEST_F(WalkingToAnItem, DoesNotFollowTheItemItselfWhenItIsMeant) {
    makeFolder("home", alice);
    makeLink("home/link", "/etc", alice);
    EXPECT_EQ(endOf(at("home/link"), Ends::atParent), at("home"));
}

TEST_F(WalkingToAnItem, FollowsALinkToAFile) {
    makeFolder("target");
    makeFile("target/file");
    makeLink("link", "target/file");
    EXPECT_EQ(endOf(at("link"), Ends::atFolder), at("target"));
}

TEST_F(WalkingToAnItem, FollowsALinkToNothingToWhereThatWouldBeMade) {
    makeFolder("target");
    makeLink("link", "target/new");
    EXPECT_EQ(endOf(at("link"), Ends::atFolder), at("target"));
}

TEST_F(WalkingToAnItem, FollowsAUsersLinkToThatUsersFolder) {
    makeFolder("home", alice);
    makeFolder("home/Files", alice);
    makeLink("home/Trash", "Files", alice);
    makeLink("home/Far", at("home/Files"), alice);
    EXPECT_EQ(endOf(at("home/Trash/item"), Ends::atFolder), at("home/Files"));
    EXPECT_EQ(endOf(at("home/Trash"), Ends::atFolder), at("home/Files"));
    EXPECT_EQ(endOf(at("home/Far/item"), Ends::atParent), at("home/Files"));
}

TEST_F(WalkingToAnItem, RefusesAUsersLinkToTheSystem) {
    makeFolder("home", alice);
    makeLink("home/Trash", "/etc", alice);
    makeLink("home/passwd", "/etc/passwd", alice);
    makeLink("home/new", "/etc/new", alice);
    EXPECT_EQ(endOf(at("home/Trash"), Ends::atFolder), "EPERM");
    EXPECT_EQ(endOf(at("home/Trash/item"), Ends::atFolder), "EPERM");
    EXPECT_EQ(endOf(at("home/Trash/item"), Ends::atParent), "EPERM");
    EXPECT_EQ(endOf(at("home/Trash/new/folder"), Ends::atDeepest), "EPERM");
    EXPECT_EQ(endOf(at("home/passwd"), Ends::atFolder), "EPERM");
    EXPECT_EQ(endOf(at("home/new"), Ends::atFolder), "EPERM");
}

TEST_F(WalkingToAnItem, RefusesAUsersLinkToAnotherUsersFolder) {
    makeFolder("home", alice);
    makeFolder("other", bob);
    makeLink("home/link", at("other"), alice);
    EXPECT_EQ(endOf(at("home/link/item"), Ends::atFolder), "EPERM");
}

TEST_F(WalkingToAnItem, RefusesALinkThatAUserMadeInSomebodyElsesFolder) {
    makeFolder("home", alice, 0777);
    makeFolder("home/own", alice);
    makeLink("home/link", at("home/own"), bob);
    EXPECT_EQ(endOf(at("home/link/item"), Ends::atFolder), "EPERM");
}

// Whoever owns the folder can move a link of root's there from elsewhere.
TEST_F(WalkingToAnItem, RefusesTheSuperusersLinkInAUsersFolder) {
    makeFolder("home", alice);
    makeLink("home/link", "/etc");
    EXPECT_EQ(endOf(at("home/link/item"), Ends::atFolder), "EPERM");
}

TEST_F(WalkingToAnItem, RefusesALinkThatAUserCanExchangeTogetherWithItsFolder) {
    makeFolder("home", alice);
    makeFolder("home/roots");
    makeLink("home/roots/link", "/etc");
    EXPECT_EQ(endOf(at("home/roots/link/item"), Ends::atFolder), "EPERM");
}

TEST_F(WalkingToAnItem, FollowsNoLinkWhereAGroupMayWrite) {
    makeFolder("shared", 0, 0775);
    makeFolder("target");
    makeLink("shared/link", at("target"));
    EXPECT_EQ(endOf(at("shared/link/item"), Ends::atFolder), "EPERM");
}

TEST_F(WalkingToAnItem, TrustsTheSuperusersLinksAmongTemporaryFiles) {
    makeFolder("tmp", 0, 01777);
    makeFolder("target");
    makeLink("tmp/link", at("target"));
    EXPECT_EQ(endOf(at("tmp/link/item"), Ends::atFolder), at("target"));
}

TEST_F(WalkingToAnItem, HoldsAUsersLinkAmongTemporaryFilesToThatUsersFolders) {
    makeFolder("tmp", 0, 01777);
    makeFolder("home", alice);
    makeLink("tmp/good", at("home"), alice);
    makeLink("tmp/bad", "/etc", alice);
    EXPECT_EQ(endOf(at("tmp/good/item"), Ends::atFolder), at("home"));
    EXPECT_EQ(endOf(at("tmp/bad/item"), Ends::atFolder), "EPERM");
}

TEST_F(WalkingToAnItem, HoldsEveryLinkOfAChainToItsOwner) {
    makeFolder("home", alice);
    makeFolder("home/own", alice);
    makeLink("home/first", at("second"), alice);
    makeLink("second", at("home/own"));
    makeLink("home/third", at("fourth"), alice);
    makeLink("fourth", "/etc");
    EXPECT_EQ(endOf(at("home/first/item"), Ends::atFolder), at("home/own"));
    EXPECT_EQ(endOf(at("home/third/item"), Ends::atFolder), "EPERM");
}

TEST_F(WalkingToAnItem, FollowsFortyLinksAndNoMore) {
    makeFolder("folder");
    makeLink("0", "folder");
    for (int i = 1; i <= 40; ++i) {
        makeLink(std::to_string(i), std::to_string(i - 1));
    }
    EXPECT_EQ(endOf(at("39/item"), Ends::atFolder), at("folder"));
    EXPECT_EQ(endOf(at("40/item"), Ends::atFolder), "ELOOP");
}

TEST_F(WalkingToAnItem, EndsWithALinkToItself) {
    makeLink("loop", "loop");
    EXPECT_EQ(endOf(at("loop"), Ends::atFolder), "ELOOP");
    EXPECT_EQ(endOf(at("loop/item"), Ends::atDeepest), "ELOOP");
}

// Whose way it is

TEST_F(WalkingToAnItem, KnowsTheSuperusersOwnWay) {
    makeFolder("folder");
    EXPECT_TRUE(walked(at("folder/item")).isRootsOwn);
    EXPECT_EQ(walked(at("folder/item")).ruler, uid_t{0});
}

TEST_F(WalkingToAnItem, KnowsAWayThroughAUsersFolder) {
    makeFolder("home", alice);
    makeFolder("home/roots");
    EXPECT_FALSE(walked(at("home/roots/item")).isRootsOwn);
    EXPECT_EQ(walked(at("home/roots/item")).ruler, alice);
}

TEST_F(WalkingToAnItem, KnowsAWayOnWhichAGroupMayWrite) {
    makeFolder("shared", 0, 0775);
    makeFolder("shared/folder");
    EXPECT_FALSE(walked(at("shared/folder/item")).isRootsOwn);
    EXPECT_EQ(walked(at("shared/folder/item")).ruler, std::nullopt);
}

TEST_F(WalkingToAnItem, KnowsAWayThatTwoUsersRule) {
    makeFolder("home", alice);
    makeFolder("home/guest", bob);
    EXPECT_EQ(walked(at("home/guest/item")).ruler, std::nullopt);
}

TEST_F(WalkingToAnItem, SaysWhatStandsAtTheEnd) {
    makeFile("file");
    EXPECT_TRUE(S_ISREG(walked(at("file")).item->st_mode));
    EXPECT_TRUE(walked(top()).endsInFolder());
    EXPECT_FALSE(walked(at("missing")).item);
}

}  // namespace
