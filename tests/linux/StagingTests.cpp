#include "platform/linux/services/files/Staging.h"

#include <sys/wait.h>

#include "tests/linux/FilesFixture.h"

namespace {

using platform::linux_host::placeAt;
using platform::linux_host::renameInTwoSteps;
using platform::linux_host::renameWithoutReplacing;
using platform::linux_host::stagedSibling;

class Staging : public FilesFixture {
protected:
    int inTwoSteps(const std::string& from, const std::string& to) const {
        return renameInTwoSteps(placeAt(at(from)), placeAt(at(to)));
    }
};

TEST_F(Staging, SiblingStandsInTheSameFolder) {
    const auto place = stagedSibling({.folder = 7, .name = "b", .shown = "/a/b"});
    EXPECT_EQ(place.folder, 7);
    EXPECT_EQ("/a/" + place.name.substr(2), place.shown);
}

TEST_F(Staging, RenamingNeverReplaces) {
    write("from", "new");
    write("file", "old");
    makeFolder("folder");
    link("dangling", "nowhere");
    for (const char* name : {"file", "folder", "dangling"}) {
        EXPECT_EQ(renameWithoutReplacing(placeAt(at("from")), placeAt(at(name))), EEXIST) << name;
        EXPECT_EQ(inTwoSteps("from", name), EEXIST) << name;
    }
    EXPECT_EQ(read("file"), "old");
    EXPECT_EQ(read("from"), "new");
}

TEST_F(Staging, RenamingInTwoStepsTakesFilesLinksAndFolders) {
    write("file", "x");
    link("link", "nowhere");
    makeFolder("folder/sub");
    for (const std::string name : {"file", "link", "folder"}) {
        EXPECT_EQ(inTwoSteps(name, name + "2"), 0) << name;
        EXPECT_FALSE(isThere(name)) << name;
        EXPECT_TRUE(isThere(name + "2")) << name;
    }
    EXPECT_EQ(status("file2").st_nlink, 1U);
    EXPECT_EQ(inTwoSteps("missing", "x"), ENOENT);
}

TEST_F(Staging, RenamingInTwoStepsLeavesOneNameWhenTheOldOneCannotGo) {
    if (!isSuperuser()) {
        GTEST_SKIP() << "needs two accounts";
    }
    constexpr uid_t user = 1234;
    setMode(".", 0711);
    makeFolder("sticky");
    setMode("sticky", 01777);
    write("sticky/file", "somebody else's");
    setMode("sticky/file", 0666);
    makeFolder("his");
    ASSERT_EQ(::chown(at("his").c_str(), user, user), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        ::_exit(::setuid(user) == 0 && inTwoSteps("sticky/file", "his/file") == EPERM ? 0 : 1);
    }
    int ended = -1;
    ::waitpid(child, &ended, 0);
    EXPECT_EQ(ended, 0);
    EXPECT_TRUE(names("his").empty());
    EXPECT_EQ(status("sticky/file").st_nlink, 1U);
}

}  // namespace
