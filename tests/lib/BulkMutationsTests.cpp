#include "lib/KZFileManager/BulkMutations.h"

#include <algorithm>

#include "tests/lib/FilesFixture.h"

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

namespace {

class TrashingContents : public FilesFixture {};
class CopyingContents : public FilesFixture {};
class TrashingByName : public FilesFixture {};
class EmptyFolders : public FilesFixture {};
class FolderStructures : public FilesFixture {};

TEST_F(TrashingContents, TakesEveryEntryAndKeepsTheFolder) {
    add("folder/a");
    add("folder/.hidden");
    add("folder/sub/b");
    EXPECT_TRUE(KZFileManager::trashDirectoryContents(disk / "folder"));
    EXPECT_TRUE(std::filesystem::is_empty(disk / "folder"));
    EXPECT_TRUE(stands(trash + "/sub/b"));
    EXPECT_EQ(workspace.recycled.size(), 3U);
}

TEST_F(TrashingContents, GoesOnAfterAFailure) {
    add("folder/a");
    add("folder/b");
    workspace.recycleFailure = platform::Error{EACCES, "refused"};
    EXPECT_FALSE(KZFileManager::trashDirectoryContents(disk / "folder", ShouldAuth::no));
    EXPECT_EQ(workspace.recycled.size(), 2U);
    EXPECT_EQ(authorization.created, 0);
    EXPECT_TRUE(KZFileManager::trashDirectoryContents(disk / "folder"));
    EXPECT_EQ(authorization.executions.size(), 2U);
}

TEST_F(TrashingContents, OfAnEmptyMissingOrUnreadableFolderSucceeds) {
    EXPECT_TRUE(KZFileManager::trashDirectoryContents(add("folder/")));
    EXPECT_TRUE(KZFileManager::trashDirectoryContents(disk / "gone"));
    EXPECT_TRUE(KZFileManager::trashDirectoryContents(add("file")));
}

TEST_F(CopyingContents, CopiesAndLogsEveryEntryInOrder) {
    add("from/a", "1");
    add("from/sub/b", "2");
    add("to/");
    std::vector<std::string> expected;
    for (const auto& entry : listing(disk / "from")) {
        expected.push_back("File: " + entry.name);
    }
    EXPECT_TRUE(KZFileManager::copyContentsOfDirectory(disk / "from", disk / "to", std::chrono::seconds{10}));
    EXPECT_EQ(read(disk / "to/a"), "1");
    EXPECT_EQ(read(disk / "to/sub/b"), "2");
    EXPECT_EQ(newLogEntries(), expected);
}

TEST_F(CopyingContents, StopsAtTheFirstFailure) {
    for (const char* name : {"a", "b", "c"}) {
        add(std::string("from/") + name);
    }
    add("to/");
    const auto listed = listing(disk / "from");
    files.fails = [&](const Call& call) -> std::optional<int> {
        const bool second = call.operation == Operation::copyItem && call.path == disk / ("from/" + listed[1].name);
        return second ? std::optional(EIO) : std::nullopt;
    };
    authorization.rightsStatus = -60006;
    EXPECT_FALSE(KZFileManager::copyContentsOfDirectory(disk / "from", disk / "to", std::chrono::seconds{10}));
    files.fails = {};
    EXPECT_TRUE(stands(disk / ("to/" + listed[0].name)));
    EXPECT_FALSE(stands(disk / ("to/" + listed[1].name)));
    EXPECT_FALSE(stands(disk / ("to/" + listed[2].name)));
}

TEST_F(CopyingContents, OfAnEmptyFolderSucceedsAndMakesNothing) {
    EXPECT_TRUE(KZFileManager::copyContentsOfDirectory(add("from/"), disk / "to", std::chrono::seconds{10}));
    EXPECT_FALSE(stands(disk / "to"));
}

TEST_F(CopyingContents, DoesNotMakeTheDestinationFolder) {
    authorization.rightsStatus = -60006;
    add("from/a");
    EXPECT_FALSE(KZFileManager::copyContentsOfDirectory(disk / "from", disk / "to", std::chrono::seconds{0}));
    EXPECT_FALSE(stands(disk / "to"));
}

TEST_F(TrashingByName, FindsAnExtensionInAnyLetterCaseAtAnyDepth) {
    const auto top = add("folder/a.AU");
    const auto deep = add("folder/sub/deep/b.au");
    add("folder/c.auv");
    add("folder/au");
    EXPECT_THAT(KZFileManager::trashFilesOfType("Au", disk / "folder"), UnorderedElementsAre(top, deep));
    EXPECT_FALSE(stands(top));
    EXPECT_FALSE(stands(deep));
    EXPECT_TRUE(stands(disk / "folder/c.auv"));
    EXPECT_TRUE(stands(disk / "folder/au"));
}

TEST_F(TrashingByName, FindsAnExactName) {
    const auto top = add("folder/Thumbs.db");
    const auto deep = add("folder/sub/Thumbs.db");
    const auto other = add("folder/thumbs.db");
    EXPECT_THAT(KZFileManager::trashFilesNamed("Thumbs.db", disk / "folder"), UnorderedElementsAre(top, deep));
    EXPECT_TRUE(stands(other));
}

TEST_F(TrashingByName, WalksIntoFoldersThatMatchAndKeepsThem) {
    const auto inside = add("folder/Plug.vst3/x.vst3");
    EXPECT_THAT(KZFileManager::trashFilesOfType("vst3", disk / "folder"), ElementsAre(inside));
    EXPECT_TRUE(stands(disk / "folder/Plug.vst3"));
    EXPECT_THAT(KZFileManager::trashFilesNamed("Plug.vst3", disk / "folder"), IsEmpty());
}

TEST_F(TrashingByName, ListsASubfoldersMatchesAtTheSubfoldersPlace) {
    for (const char* name : {"a.x", "m/1.x", "m/2.x", "z.x", "n/3.x"}) {
        add(std::string("folder/") + name);
    }
    std::vector<std::string> expected;
    for (const auto& entry : listing(disk / "folder")) {
        const std::string path = disk / ("folder/" + entry.name);
        if (!std::filesystem::is_directory(path)) {
            expected.push_back(path);
            continue;
        }
        for (const auto& inner : listing(path)) {
            expected.push_back(path + "/" + inner.name);
        }
    }
    ASSERT_EQ(expected.size(), 5U);
    EXPECT_EQ(KZFileManager::trashFilesOfType("x", disk / "folder"), expected);
}

TEST_F(TrashingByName, NamesWhatMatchedEvenWhenItCouldNotBeTrashed) {
    const auto file = add("folder/a.x");
    workspace.recycleFailure = platform::Error{EACCES, "refused"};
    authorization.rightsStatus = -60006;
    EXPECT_THAT(KZFileManager::trashFilesOfType("x", disk / "folder"), ElementsAre(file));
    EXPECT_TRUE(stands(file));
}

TEST_F(TrashingByName, FollowsALinkToAFolderAndEndsWhereItLeadsBack) {
    add("elsewhere/a.x");
    add("folder/");
    addLink("folder/link", "../elsewhere");
    addLink("folder/loop", ".");
    EXPECT_THAT(KZFileManager::trashFilesOfType("x", disk / "folder"), ElementsAre(disk / "folder/link/a.x"));
}

TEST_F(TrashingByName, FindsNothingInAMissingFolder) {
    EXPECT_THAT(KZFileManager::trashFilesOfType("x", disk / "gone"), IsEmpty());
    EXPECT_THAT(KZFileManager::trashFilesNamed("x", disk / "gone"), IsEmpty());
}

TEST_F(EmptyFolders, MayHoldTheFileBrowsersClutterAndEmptyFolders) {
    EXPECT_TRUE(KZFileManager::isFolderEmpty(add("nothing/")));
    add("clutter/.DS_Store");
    EXPECT_TRUE(KZFileManager::isFolderEmpty(disk / "clutter"));
    add("icon/Icon\r");
    EXPECT_TRUE(KZFileManager::isFolderEmpty(disk / "icon"));
    add("all/.DS_Store");
    add("all/Icon\r");
    add("all/sub/sub/");
    add("all/sub/.DS_Store");
    EXPECT_TRUE(KZFileManager::isFolderEmpty(disk / "all"));
}

TEST_F(EmptyFolders, HoldNoFile) {
    add("a/.hidden");
    EXPECT_FALSE(KZFileManager::isFolderEmpty(disk / "a"));
    add("b/sub/sub/file");
    EXPECT_FALSE(KZFileManager::isFolderEmpty(disk / "b"));
    add("c/Icon");
    EXPECT_FALSE(KZFileManager::isFolderEmpty(disk / "c"));
    add("d/.DS_Store");
    add("d/file");
    EXPECT_FALSE(KZFileManager::isFolderEmpty(disk / "d"));
}

TEST_F(EmptyFolders, HoldNoLinkButOneToAnEmptyFolder) {
    add("empty/");
    add("a/");
    addLink("a/link", "../empty");
    EXPECT_TRUE(KZFileManager::isFolderEmpty(disk / "a"));
    addLink("a/dangling", "nowhere");
    EXPECT_FALSE(KZFileManager::isFolderEmpty(disk / "a"));
    add("b/");
    addLink("b/loop", ".");
    EXPECT_FALSE(KZFileManager::isFolderEmpty(disk / "b"));
}

TEST_F(EmptyFolders, AreWhatCannotBeListed) {
    EXPECT_TRUE(KZFileManager::isFolderEmpty(disk / "gone"));
    EXPECT_TRUE(KZFileManager::isFolderEmpty(add("file")));
}

TEST_F(EmptyFolders, AreRemovedWithTheirClutter) {
    add("folder/.DS_Store");
    add("folder/sub/");
    EXPECT_TRUE(KZFileManager::removeFolderIfEmpty(disk / "folder"));
    EXPECT_FALSE(stands(disk / "folder"));
}

TEST_F(EmptyFolders, AreAllThatIsRemoved) {
    const auto file = add("folder/sub/file");
    EXPECT_FALSE(KZFileManager::removeFolderIfEmpty(disk / "folder"));
    EXPECT_TRUE(stands(file));
}

TEST_F(EmptyFolders, AreRemovedWithoutWhatALinkInThemLeadsTo) {
    add("kept/");
    add("folder/");
    addLink("folder/link", "../kept");
    EXPECT_TRUE(KZFileManager::removeFolderIfEmpty(disk / "folder"));
    EXPECT_TRUE(stands(disk / "kept"));
}

TEST_F(FolderStructures, RepeatAFoldersPathBelowTheDestination) {
    const auto folder = add("tree/a/b/");
    const auto made = KZFileManager::createDirectoryStructure(folder, disk / "root");
    EXPECT_EQ(made, (disk / "root") + folder);
    EXPECT_TRUE(std::filesystem::is_directory(made));
}

TEST_F(FolderStructures, TakeTheFolderThatHoldsAFileAPackageOrNothing) {
    const auto file = add("tree/file");
    const auto package = add("tree/Plug.vst3/");
    workspace.packages.insert(package);
    const auto expected = (disk / "root") + (disk / "tree");
    EXPECT_EQ(KZFileManager::createDirectoryStructure(file, disk / "root"), expected);
    EXPECT_EQ(KZFileManager::createDirectoryStructure(package, disk / "root"), expected);
    EXPECT_EQ(KZFileManager::createDirectoryStructure(disk / "tree/gone", disk / "root"), expected);
}

TEST_F(FolderStructures, LeaveAloneWhatIsThere) {
    add("root" + disk.path() + "/tree/", "");
    const auto file = add("tree/file");
    files.forgetCalls();
    KZFileManager::createDirectoryStructure(file, disk / "root");
    EXPECT_EQ(std::ranges::count(files.calls(), Operation::createDirectory, &Call::operation), 0);
}

TEST_F(FolderStructures, NameTheFolderEvenWhenItCouldNotBeMade) {
    const auto folder = add("tree/");
    files.alwaysFail(Operation::createDirectory, EACCES);
    authorization.rightsStatus = -60006;
    EXPECT_EQ(KZFileManager::createDirectoryStructure(folder, disk / "root"), (disk / "root") + folder);
    files.fails = {};
    EXPECT_FALSE(stands((disk / "root") + folder));
}

}  // namespace
