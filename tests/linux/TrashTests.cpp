#include "platform/linux/services/workspace/Trash.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>

#include <algorithm>
#include <ctime>
#include <functional>

#include "platform/linux/services/workspace/Mounts.h"
#include "platform/linux/services/workspace/TrashFolder.h"
#include "tests/linux/FilesFixture.h"

namespace {

using platform::linux_host::recycleItem;
using platform::linux_host::trashName;
using platform::linux_host::trashNote;

class Trashing : public FilesFixture {
protected:
    void SetUp() override {
        makeFolder("home");
        makeFolder("place");
    }
    platform::Failure recycle(const std::string& name, const std::string& folder = "place") const {
        return recycleItem(at(folder), name, {at("home/.Trash"), at("home/.local/share")});
    }
    static constexpr const char* items = "home/.local/share/Trash/files";
    static constexpr const char* notes = "home/.local/share/Trash/info";
    std::string item(const std::string& name) const { return std::string(items) + "/" + name; }
    std::string note(const std::string& name) const { return std::string(notes) + "/" + name + ".trashinfo"; }
};

TEST_F(Trashing, ItemLiesInTheTrashWithANoteOfWhereItCameFrom) {
    write("place/My File.txt", "text");
    EXPECT_FALSE(recycle("My File.txt"));
    EXPECT_FALSE(isThere("place/My File.txt"));
    EXPECT_EQ(read(item("My File.txt")), "text");
    const std::string text = read(note("My File.txt"));
    const std::string real = std::filesystem::canonical(at("place")).string();
    EXPECT_EQ(text.find("[Trash Info]\nPath=" + real + "/My%20File.txt\nDeletionDate=20"), 0U) << text;
}

TEST_F(Trashing, HomeGetsALinkToItsTrash) {
    write("place/file", "text");
    EXPECT_FALSE(recycle("file"));
    EXPECT_EQ(std::filesystem::read_symlink(at("home/.Trash")), ".local/share/Trash/files");
    EXPECT_EQ(read("home/.Trash/file"), "text");
    EXPECT_EQ(status(items).st_mode & 0777U, 0700U);
}

TEST_F(Trashing, TrashThatIsARealFolderIsUsedAsItIs) {
    makeFolder("home/.Trash");
    write("home/.Trash/file.txt", "older");
    write("place/file.txt", "newer");
    EXPECT_FALSE(recycle("file.txt"));
    EXPECT_EQ(read("home/.Trash/file.txt"), "older");
    EXPECT_EQ(read("home/.Trash/file.2.txt"), "newer");
    EXPECT_FALSE(isThere("home/.local"));
}

TEST_F(Trashing, TrashThatIsALinkElsewhereIsUsedAsItIs) {
    makeFolder("elsewhere");
    link("home/.Trash", "../elsewhere");
    write("place/file", "x");
    EXPECT_FALSE(recycle("file"));
    EXPECT_EQ(read("elsewhere/file"), "x");
}

TEST_F(Trashing, FileInTheWayOfTheTrashStaysAndTheUsualPlaceIsUsed) {
    write("home/.Trash", "a file");
    write("place/file", "x");
    EXPECT_FALSE(recycle("file"));
    EXPECT_EQ(read("home/.Trash"), "a file");
    EXPECT_EQ(read(item("file")), "x");
}

TEST_F(Trashing, SameNameInTheSameSecondIsKeptTwice) {
    for (const char* text : {"one", "two", "three"}) {
        write("place/file.tar.gz", text);
        ASSERT_FALSE(recycle("file.tar.gz"));
    }
    EXPECT_EQ(read(item("file.tar.gz")), "one");
    EXPECT_EQ(read(item("file.tar.2.gz")), "two");
    EXPECT_EQ(read(item("file.tar.3.gz")), "three");
    EXPECT_EQ(names(notes).size(), 3U);
}

TEST_F(Trashing, HundredItemsOfOneNameAreAllKept) {
    for (int i = 0; i < 100; ++i) {
        write("place/file", std::to_string(i));
        ASSERT_FALSE(recycle("file"));
    }
    EXPECT_EQ(names(items).size(), 100U);
    EXPECT_EQ(names(notes).size(), 100U);
}

TEST_F(Trashing, ItemWithoutANoteInTheTrashIsNotReplaced) {
    makeFolder(items);
    setMode(items, 0700);
    write(item("file"), "older");
    write("place/file", "newer");
    EXPECT_FALSE(recycle("file"));
    EXPECT_EQ(read(item("file")), "older");
    EXPECT_EQ(read(item("file.2")), "newer");
    EXPECT_FALSE(isThere(note("file")));
}

TEST_F(Trashing, FoldersLinksAndReadOnlyFilesGoAsTheyAre) {
    makeFolder("place/folder/sub");
    write("place/folder/sub/file", "x");
    link("place/dangling", "nowhere");
    write("place/read-only", "x");
    setMode("place/read-only", 0400);
    for (const char* name : {"folder", "dangling", "read-only"}) {
        EXPECT_FALSE(recycle(name)) << name;
    }
    EXPECT_EQ(read(item("folder/sub/file")), "x");
    EXPECT_EQ(std::filesystem::read_symlink(at(item("dangling"))), "nowhere");
    EXPECT_EQ(status(item("read-only")).st_mode & 0777U, 0400U);
    EXPECT_TRUE(names("place").empty());
}

TEST_F(Trashing, NamesOfEveryKindAndLengthFit) {
    const std::string longName = std::string(250, 'n') + ".vst3";
    for (const std::string& name : {std::string("new\nline"), std::string("50%"), std::string("\xFF\xFE"), longName}) {
        write("place/" + name, "x");
        EXPECT_FALSE(recycle(name)) << name;
    }
    EXPECT_TRUE(names("place").empty());
    EXPECT_EQ(names(items).size(), 4U);
    EXPECT_NE(read(note("new\nline")).find("/new%0Aline\n"), std::string::npos);
}

TEST_F(Trashing, MissingItemAndNamesThatAreNoneAreRefused) {
    EXPECT_EQ(recycle("missing")->code, ENOENT);
    for (const char* name : {"", ".", "..", "../place", "a/b"}) {
        EXPECT_TRUE(recycle(name)) << name;
    }
    EXPECT_TRUE(isThere("place"));
}

TEST_F(Trashing, ItemThatMayNotBeMovedStaysAndLeavesNoNote) {
    if (isSuperuser()) {
        GTEST_SKIP() << "modes do not stop the superuser";
    }
    write("place/file", "x");
    setMode("place", 0555);
    const auto failed = recycle("file");
    setMode("place", 0755);
    ASSERT_TRUE(failed);
    EXPECT_EQ(read("place/file"), "x");
    EXPECT_TRUE(names(notes).empty());
    EXPECT_TRUE(names(items).empty());
}

TEST_F(Trashing, TrashThatCannotBeMadeIsAFailureAndTheItemStays) {
    write("place/file", "x");
    const auto failed = recycleItem(at("place"), "file", {at("no-home/.Trash"), at("no-home/.local/share")});
    ASSERT_TRUE(failed);
    EXPECT_EQ(read("place/file"), "x");
    EXPECT_FALSE(isThere("no-home"));
}

TEST_F(Trashing, OtherFileSystemsItemsGoIntoTheirOwnTrashOrAreCopied) {
    makeFolder("disk");
    const std::string user = std::to_string(::geteuid());
    const pid_t child = ::fork();
    if (child == 0) {
        if (::unshare(CLONE_NEWNS) != 0 || ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("tmpfs", at("disk").c_str(), "tmpfs", 0, "size=4m") != 0) {
            ::_exit(77);
        }
        makeFolder("disk/sub");
        write("disk/sub/a b", "x");
        bool right = !recycle("a b", "disk/sub") && read("disk/.Trash-" + user + "/files/a b") == "x" &&
                     read("disk/.Trash-" + user + "/info/a b.trashinfo").find("Path=sub/a%20b\n") != std::string::npos;

        makeFolder("disk/.Trash");
        write("disk/sub/not sticky", "x");
        right = right && !recycle("not sticky", "disk/sub") && names("disk/.Trash").empty();
        setMode("disk/.Trash", 01777);
        write("disk/sub/sticky", "x");
        right = right && !recycle("sticky", "disk/sub") && read("disk/.Trash/" + user + "/files/sticky") == "x";

        std::filesystem::remove_all(at("disk/.Trash"));
        std::filesystem::remove_all(at("disk/.Trash-" + user));
        write("disk/.Trash-" + user, "a file in the way");
        write("disk/sub/copied", "x");
        right = right && !recycle("copied", "disk/sub") && read(item("copied")) == "x" && names("disk/sub").empty();
        ::_exit(right ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    if (WIFEXITED(status) && WEXITSTATUS(status) == 77) {
        GTEST_SKIP() << "no right to mount a file system";
    }
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST(TrashNames, StandBeforeTheExtensionAndAreCutBetweenCharacters) {
    EXPECT_EQ(trashName("a.txt", 0), "a.txt");
    EXPECT_EQ(trashName("a.txt", 1), "a.2.txt");
    EXPECT_EQ(trashName(".hidden", 1), ".hidden.2");
    EXPECT_EQ(trashName("plain", 2), "plain.3");
    std::string accents;
    for (int i = 0; i < 127; ++i) {
        accents += "é";
    }
    const std::string cut = trashName(accents + "x", 1);
    EXPECT_LE(cut.size(), 245U);
    EXPECT_TRUE(cut.ends_with("é.2"));
    EXPECT_NE(trashName("a", 40), trashName("a", 40));
}

TEST(TrashNotes, EncodeThePathAndUseLocalTime) {
    const std::time_t when = 1'000'000'000;
    std::tm local{};
    ::localtime_r(&when, &local);
    std::array<char, 32> date{};
    std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
    EXPECT_EQ(trashNote("/a b/é%", when),
              "[Trash Info]\nPath=/a%20b/%C3%A9%25\nDeletionDate=" + std::string(date.data()) + "\n");
}

}  // namespace
