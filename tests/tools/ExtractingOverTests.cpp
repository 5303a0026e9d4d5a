// Unpacking into a folder that is there.
#include "tests/tools/ExtractingFixture.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

TEST_F(Extracting, ReplacesFilesThatAreThereAndKeepsTheOthers) {
    write("out/f/file", "old");
    write("out/f/other", "kept");
    ASSERT_EQ(extract(ZipMaker().file("f/file", "new").file("f/more", "more")), "");
    EXPECT_THAT(tree("out"), ElementsAre("f", "f/file", "f/more", "f/other"));
    EXPECT_EQ(read("out/f/file"), "new");
}

TEST_F(Extracting, ReplacesALinkThatIsThereAndWritesNothingThroughIt) {
    write("elsewhere/file", "untouched");
    makeFolder("out");
    std::filesystem::create_symlink(place / "elsewhere", place / "out/f");
    std::filesystem::create_symlink(place / "elsewhere/file", place / "out/link");
    ASSERT_EQ(extract(ZipMaker().file("f/file", "new").file("link", "new")), "");
    EXPECT_EQ(read("elsewhere/file"), "untouched");
    EXPECT_EQ(read("out/f/file"), "new");
    EXPECT_EQ(read("out/link"), "new");
}

TEST_F(Extracting, ReplacesAFileByAFolder) {
    write("out/f", "old");
    ASSERT_EQ(extract(ZipMaker().file("f/file")), "");
    EXPECT_EQ(read("out/f/file"), "contents");
}

TEST_F(Extracting, DoesNotReplaceAFolderByAFile) {
    write("out/f/file", "old");
    EXPECT_THAT(extract(ZipMaker().file("f")), HasSubstr("cannot replace “f”"));
    EXPECT_THAT(tree("out"), ElementsAre("f", "f/file"));
}

TEST_F(Extracting, LeavesAFolderThatIsThereAsItWasWhenOneOfTheItemsCannotTakeItsPlace) {
    write("out/a", "old");
    write("out/f/z/file", "old");
    EXPECT_THAT(extract(ZipMaker().file("a", "new").file("b").file("f/a").file("f/z")),
                HasSubstr("cannot replace “f/z”"));
    EXPECT_THAT(tree("out"), ElementsAre("a", "f", "f/z", "f/z/file"));
    EXPECT_EQ(read("out/a"), "old");
}

TEST_F(Extracting, LeavesAFolderThatIsThereAsItWasWhenOneInItMayNotBeWritten) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser may write to every folder";
    }
    write("out/a", "old");
    ::chmod(makeFolder("out/closed").c_str(), 0500);
    EXPECT_THAT(extract(ZipMaker().file("a", "new").file("closed/file")), HasSubstr("cannot unpack into “closed”"));
    ::chmod((place / "out/closed").c_str(), 0700);
    EXPECT_THAT(tree("out"), ElementsAre("a", "closed"));
    EXPECT_EQ(read("out/a"), "old");
}

TEST_F(Extracting, MergesIntoAFolderThatMayNotBeWrittenWhatLiesDeeper) {
    makeFolder("out/closed/open");
    ::chmod((place / "out/closed").c_str(), 0500);
    ASSERT_EQ(extract(ZipMaker().file("closed/open/file")), "");
    ::chmod((place / "out/closed").c_str(), 0700);
    EXPECT_EQ(read("out/closed/open/file"), "contents");
}

TEST_F(Extracting, ClosesUpFoldersAfterMergingThem) {
    makeFolder("out/closed");
    ASSERT_EQ(extract(ZipMaker()
                          .folder("closed/", S_IFDIR | 0500)
                          .file("closed/file")
                          .folder("new/", S_IFDIR | 0500)
                          .file("new/file")),
              "");
    EXPECT_EQ(modeOf("out/closed"), 0500U);
    EXPECT_EQ(modeOf("out/new"), 0500U);
    ::chmod((place / "out/closed").c_str(), 0700);
    ::chmod((place / "out/new").c_str(), 0700);
}

TEST_F(Extracting, LeavesAFolderThatIsThereAsItWasWhenTheArchiveIsDamaged) {
    write("out/a", "old");
    EXPECT_THAT(extract(ZipMaker().file("a", "new").add({.name = "b", .crc = 1})), HasSubstr("“b”: damaged"));
    EXPECT_THAT(tree("out"), ElementsAre("a"));
    EXPECT_EQ(read("out/a"), "old");
}

TEST_F(Extracting, RefusesAFileAsDestination) {
    write("out", "a file");
    EXPECT_THAT(extract(ZipMaker().file("a")), HasSubstr("cannot unpack into"));
    EXPECT_EQ(read("out"), "a file");
}

}  // namespace
