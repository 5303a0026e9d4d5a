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

}  // namespace
