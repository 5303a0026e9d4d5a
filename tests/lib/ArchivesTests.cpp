#include <sys/stat.h>

#include "lib/KZFileManager/BulkMutations.h"
#include "tests/lib/FilesFixture.h"

using ::testing::ElementsAre;

namespace {

// The archiver is replaced by a tool that makes its last argument a file.
class Archives : public FilesFixture {
protected:
    Archives() { archiverDoes("for last; do :; done\necho archive > \"$last\"\n"); }

    void archiverDoes(const std::string& script) {
        const auto tool = add("archiver", "#!/bin/sh\n" + script);
        ::chmod(tool.c_str(), 0755);
        processes.substitutes["/usr/bin/ditto"] = tool;
    }
    std::vector<std::string> arguments() const { return processes.commands().back().arguments; }
};

TEST_F(Archives, HoldTheFolderItselfByDefault) {
    const auto folder = add("folder/");
    EXPECT_TRUE(KZFileManager::compressFile(folder, disk / "a.zip"));
    EXPECT_THAT(arguments(), ElementsAre("-ck", "--keepParent", folder, disk / "a.zip"));
}

TEST_F(Archives, HoldTheContentsAloneWithoutTheParent) {
    const auto folder = add("folder/");
    EXPECT_TRUE(KZFileManager::compressFile(folder, disk / "a.zip", IncludeParent::no));
    EXPECT_THAT(arguments(), ElementsAre("-ck", folder, disk / "a.zip"));
}

TEST_F(Archives, ReplaceOneThatIsThereWhichGoesToTheTrash) {
    add("a.zip", "old");
    EXPECT_TRUE(KZFileManager::compressFile(add("folder/"), disk / "a.zip"));
    EXPECT_EQ(read(disk / "a.zip"), "archive\n");
    EXPECT_EQ(read(trash + "/a.zip"), "old");
}

TEST_F(Archives, AreJudgedByWhetherTheyExistAfterwards) {
    archiverDoes("exit 0\n");
    EXPECT_FALSE(KZFileManager::compressFile(add("folder/"), disk / "a.zip"));
    archiverDoes("echo half > \"$4\"\nexit 1\n");
    EXPECT_TRUE(KZFileManager::compressFile(disk / "folder", disk / "a.zip"));
}

TEST_F(Archives, CannotBeMadeWithoutTheTool) {
    processes.substitutes["/usr/bin/ditto"] = disk / "no tool";
    EXPECT_FALSE(KZFileManager::compressFile(add("folder/"), disk / "a.zip"));
    EXPECT_FALSE(KZFileManager::decompressFile(add("a.zip"), disk / "out"));
}

TEST_F(Archives, AreUnpackedIntoAFolder) {
    archiverDoes("mkdir \"$3\"\n");
    const auto archive = add("a.zip");
    EXPECT_TRUE(KZFileManager::decompressFile(archive, disk / "out"));
    EXPECT_THAT(arguments(), ElementsAre("-xk", archive, disk / "out"));
}

TEST_F(Archives, AreUnpackedInPlaceOfAFolderThatGoesToTheTrash) {
    archiverDoes("mkdir \"$3\"\n");
    add("out/old");
    EXPECT_TRUE(KZFileManager::decompressFile(add("a.zip"), disk / "out"));
    EXPECT_TRUE(std::filesystem::is_empty(disk / "out"));
    EXPECT_TRUE(stands(trash + "/out/old"));
}

TEST_F(Archives, AreUnpackedIntoAFolderThatCouldNotBeTrashedWithoutAskingForRights) {
    archiverDoes("echo new > \"$3/new\"\n");
    add("out/old");
    workspace.recycleFailure = platform::Error{EACCES, "refused"};
    EXPECT_TRUE(KZFileManager::decompressFile(add("a.zip"), disk / "out"));
    EXPECT_TRUE(stands(disk / "out/old"));
    EXPECT_TRUE(stands(disk / "out/new"));
    EXPECT_EQ(authorization.created, 0);
}

TEST_F(Archives, TakeNoPathForAnOption) {
    KZFileManager::compressFile("-folder", disk / "a.zip");
    EXPECT_THAT(arguments(), ElementsAre("-ck", "--keepParent", "./-folder", disk / "a.zip"));
}

// With the tool that the bundle carries.
class ArchivesOfTheShippedTool : public FilesFixture {
protected:
    ArchivesOfTheShippedTool() { processes.substitutes["/usr/bin/ditto"] = WICKFIELD_TOOLS_FOLDER "/ditto"; }
};

TEST_F(ArchivesOfTheShippedTool, BringBackWhatWasPutIn) {
    add("folder/sub/file", "text");
    addLink("folder/link", "sub/file");
    ASSERT_TRUE(KZFileManager::compressFile(disk / "folder", disk / "a.zip"));
    ASSERT_TRUE(KZFileManager::decompressFile(disk / "a.zip", disk / "out"));
    EXPECT_EQ(read(disk / "out/folder/sub/file"), "text");
    EXPECT_EQ(std::filesystem::read_symlink(disk / "out/folder/link"), "sub/file");
}

TEST_F(ArchivesOfTheShippedTool, HoldTheContentsAloneWithoutTheParent) {
    add("folder/file", "text");
    ASSERT_TRUE(KZFileManager::compressFile(disk / "folder", disk / "a.zip", IncludeParent::no));
    ASSERT_TRUE(KZFileManager::decompressFile(disk / "a.zip", disk / "out"));
    EXPECT_EQ(read(disk / "out/file"), "text");
}

TEST_F(ArchivesOfTheShippedTool, AreNotMadeOfWhatIsNotThere) {
    EXPECT_FALSE(KZFileManager::compressFile(disk / "missing", disk / "a.zip"));
    EXPECT_FALSE(stands(disk / "a.zip"));
}

TEST_F(ArchivesOfTheShippedTool, GiveNoFolderWhenTheyAreDamaged) {
    add("folder/file", std::string(1000, 'x'));
    ASSERT_TRUE(KZFileManager::compressFile(disk / "folder", disk / "a.zip"));
    std::filesystem::resize_file(disk / "a.zip", 50);
    EXPECT_FALSE(KZFileManager::decompressFile(disk / "a.zip", disk / "out"));
    EXPECT_FALSE(stands(disk / "out"));
}

TEST_F(ArchivesOfTheShippedTool, MayHaveNamesThatLookLikeOptions) {
    add("-xk", "text");
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(disk.path());
    const bool packed = KZFileManager::compressFile("-xk", "-ck");
    const bool unpacked = KZFileManager::decompressFile("-ck", "--keepParent");
    std::filesystem::current_path(before);
    EXPECT_TRUE(packed);
    EXPECT_TRUE(unpacked);
    EXPECT_EQ(read(disk / "--keepParent/-xk"), "text");
}

}  // namespace
