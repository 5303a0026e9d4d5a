// Copies that do not even begin.
#include <sys/stat.h>

#include "tests/lib/CopyingFixture.h"
#include "tests/lib/FailingAllocation.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RefusedCopy : public CopyingFixture {};

TEST_F(RefusedCopy, RefusesASourceThatIsNotThere) {
    EXPECT_FALSE(copy(disk / "missing", {disk / "a"}));
    EXPECT_THAT(newLogEntries(),
                ElementsAre("Error: File " + (disk / "missing") + " doesn't exist. Aborting copy process..."));
}

TEST_F(RefusedCopy, RefusesToGoNowhereBeforeAnythingIsOpened) {
    EXPECT_FALSE(copy(add("source"), {}));
    EXPECT_THAT(newLogEntries(),
                ElementsAre("Error: You must have at least one destination. Aborting copy process..."));
    EXPECT_THAT(openFiles.calls(), IsEmpty());
}

TEST_F(RefusedCopy, RefusesADestinationWhoseFolderIsNotThereBeforeAnythingIsOpened) {
    const std::string source = add("source");

    EXPECT_FALSE(copy(source, {disk / "a", disk / "missing/b"}));
    EXPECT_THAT(newLogEntries(), ElementsAre("Unable to copy file " + source + " - destination directory " +
                                             (disk / "missing") + " doesn't exist. Aborting copy process..."));
    EXPECT_THAT(openFiles.calls(), IsEmpty());
}

TEST_F(RefusedCopy, SaysOnTheConsoleThatTheSourceCannotBeOpened) {
    const std::string source = add("source");
    fail(OpenOperation::openForReading, source, {.code = EACCES});

    EXPECT_FALSE(copy(source, {disk / "a"}));
    EXPECT_THAT(console.lines(),
                ElementsAre("Error: Unable to read source file " + source + ". Aborting copy process..."));
    EXPECT_FALSE(stands(disk / "a"));
}

TEST_F(RefusedCopy, RefusesWithoutWaitingASourceThatIsNoFile) {
    const std::string pipe = disk / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& source : {pipe, add("folder/"), std::string("/dev/zero")}) {
        EXPECT_FALSE(copy(source, {disk / "a"})) << source;
        EXPECT_EQ(console.lines().back(), "Error: Unable to read source file " + source + ". Aborting copy process...");
        EXPECT_FALSE(stands(disk / "a")) << source;
    }
}

TEST_F(RefusedCopy, RefusesWithoutWaitingADestinationThatIsNoFile) {
    const std::string source = add("source");
    const std::string pipe = disk / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path :
         {pipe, add("folder/"), std::string("/dev/null"), addLink("dangling", disk / "nothing")}) {
        EXPECT_FALSE(copy(source, {disk / "a", path})) << path;
        EXPECT_THAT(newLogEntries(),
                    ElementsAre("Error: Unable to open destination file " + path + ". Aborting copy process..."));
        EXPECT_FALSE(stands(disk / "a")) << path;
    }
    EXPECT_FALSE(stands(disk / "nothing"));
}

TEST_F(RefusedCopy, TouchesNothingWhenOneDestinationCannotBeOpened) {
    add("a", "before");
    fail(OpenOperation::openForWriting, disk / "c", {.code = EACCES});

    EXPECT_FALSE(copy(add("source"), {disk / "a", disk / "b", disk / "c"}));
    EXPECT_EQ(read(disk / "a"), "before");
    EXPECT_FALSE(stands(disk / "b"));
    EXPECT_THAT(newLogEntries(),
                ElementsAre("Error: Unable to open destination file " + (disk / "c") + ". Aborting copy process..."));
}

TEST_F(RefusedCopy, NeverOverwritesItsSourceUnderWhateverName) {
    const std::string source = add("source", "precious");
    std::filesystem::create_hard_link(source, disk / "hard link");
    addLink("link", source);
    for (const std::string& path : {source, disk / "hard link", disk / "link", disk / "tmp/../source"}) {
        EXPECT_FALSE(copy(source, {path})) << path;
        EXPECT_THAT(newLogEntries(),
                    ElementsAre("Error: Unable to open destination file " + path + ". Aborting copy process..."));
        EXPECT_EQ(read(source), "precious") << path;
    }
}

TEST_F(RefusedCopy, RefusesTheSameDestinationTwice) {
    const std::string source = add("source");
    add("b", "before");
    std::filesystem::create_hard_link(disk / "b", disk / "other name of b");

    EXPECT_FALSE(copy(source, {disk / "a", disk / "a"}));
    EXPECT_FALSE(stands(disk / "a"));
    EXPECT_FALSE(copy(source, {disk / "b", disk / "other name of b"}));
    EXPECT_EQ(read(disk / "b"), "before");
}

TEST_F(RefusedCopy, SaysInTheLogThatThereIsNoMemoryForItsChunks) {
    const std::string source = add("source");
    {
        const FailingAllocation noMemory;
        EXPECT_FALSE(copy(source, {disk / "a"}));
    }

    EXPECT_THAT(newLogEntries(), ElementsAre("Error copying file " + source + " - out of memory"));
    EXPECT_FALSE(stands(disk / "a"));
}

}  // namespace
