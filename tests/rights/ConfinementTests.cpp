#include "platform/linux/rights/helper/Confinement.h"

#include <gtest/gtest.h>
#include <linux/landlock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <utility>
#include <variant>

#include "tests/rights/FileCommands.h"

namespace {

using platform::rights::Confinement;
using platform::rights::confinementFor;
using platform::rights::enterConfinement;
using platform::rights::enterView;
using tests::alice;
using tests::bob;
using tests::Command;
using tests::FileCommands;

// What they are for

TEST_F(FileCommands, CopyAFileIntoASystemFolder) {
    makeFolder("home", alice);
    makeFile("home/file", alice);
    makeFolder("system");
    ASSERT_EQ(run(copyOf(at("home/file"), at("system/file"))), 0);
    EXPECT_EQ(textOf(at("system/file")), "text");
    EXPECT_EQ(statOf(at("system/file")).st_uid, alice);
}

TEST_F(FileCommands, CopyAFolderWithAllThatIsInIt) {
    makeFolder("bundle", alice, 0750);
    makeFolder("bundle/Contents", alice);
    makeFile("bundle/Contents/file", alice);
    makeLink("bundle/link", "/etc", alice);
    ASSERT_EQ(run(copyOf(at("bundle"), at("copy"))), 0);
    EXPECT_EQ(textOf(at("copy/Contents/file")), "text");
    EXPECT_EQ(statOf(at("copy")).st_mode & 07777U, 0750U);
    EXPECT_EQ(statOf(at("copy")).st_mtim.tv_nsec, statOf(at("bundle")).st_mtim.tv_nsec);
    EXPECT_EQ(std::filesystem::read_symlink(at("copy/link")), "/etc");
}

TEST_F(FileCommands, CopyAFolderIntoAUsersFolder) {
    makeFolder("bundle", alice, 0750);
    makeFile("bundle/file", alice);
    makeFolder("home", alice);
    makeFolder("home/roots");
    ASSERT_EQ(run(copyOf(at("bundle"), at("home/roots/copy"))), 0);
    EXPECT_EQ(textOf(at("home/roots/copy/file")), "text");
    EXPECT_EQ(statOf(at("home/roots/copy")).st_mode & 07777U, 0750U);
    EXPECT_EQ(statOf(at("home/roots/copy")).st_uid, alice);
}

TEST_F(FileCommands, CopyOverAFileThatIsThere) {
    makeFile("new", 0, "new");
    makeFile("old", 0, "longer than that");
    ASSERT_EQ(run(copyOf(at("new"), at("old"))), 0);
    EXPECT_EQ(textOf(at("old")), "new");
}

TEST_F(FileCommands, CopyIntoAFolderThatIsThere) {
    makeFile("file");
    makeFolder("home", alice);
    makeFolder("home/folder", alice);
    ASSERT_EQ(run(copyOf(at("file"), at("home/folder"))), 0);
    EXPECT_TRUE(exists(at("home/folder/file")));
}

TEST_F(FileCommands, CopyAUsersLinkAsTheLinkItIs) {
    makeFolder("home", alice);
    makeLink("home/link", "/etc/passwd", alice);
    ASSERT_EQ(run(copyOf(at("home/link"), at("copy"))), 0);
    EXPECT_EQ(std::filesystem::read_symlink(at("copy")), "/etc/passwd");
}

TEST_F(FileCommands, MoveAFolderByRenamingIt) {
    makeFolder("system");
    makeFolder("system/item");
    makeFolder("home", alice);
    makeFolder("home/Trash", alice);
    const auto before = statOf(at("system/item"));
    ASSERT_EQ(run({"/bin/mv", "-f", at("system/item"), at("home/Trash/item")}), 0);
    EXPECT_EQ(statOf(at("home/Trash/item")).st_ino, before.st_ino);
}

TEST_F(FileCommands, MoveIntoTheTrashThatAUsersLinkLeadsTo) {
    makeFolder("system");
    makeFile("system/item");
    makeFolder("home", alice);
    makeFolder("home/files", alice);
    makeLink("home/.Trash", "files", alice);
    ASSERT_EQ(run({"/bin/mv", "-f", at("system/item"), at("home/.Trash/item")}), 0);
    EXPECT_TRUE(exists(at("home/files/item")));
}

TEST_F(FileCommands, MoveToAnotherFileSystem) {
    const fakes::TemporaryFolder elsewhere("/dev/shm");
    if (statOf(elsewhere.path()).st_dev == statOf(top()).st_dev) {
        GTEST_SKIP() << "there is no second file system";
    }
    makeFolder("item", alice, 0750);
    makeFile("item/file", bob);
    ASSERT_EQ(run({"/bin/mv", "-f", at("item"), elsewhere / "item"}), 0);
    EXPECT_FALSE(exists(at("item")));
    EXPECT_EQ(textOf(elsewhere / "item/file"), "text");
    EXPECT_EQ(statOf(elsewhere / "item").st_mode & 07777U, 0750U);
    EXPECT_EQ(statOf(elsewhere / "item/file").st_uid, bob);
}

TEST_F(FileCommands, MoveToAnotherFileSystemWhereAUsersLinkLeads) {
    const fakes::TemporaryFolder elsewhere("/dev/shm");
    if (statOf(elsewhere.path()).st_dev == statOf(top()).st_dev) {
        GTEST_SKIP() << "there is no second file system";
    }
    const std::string home = elsewhere / "home";
    for (const auto& folder : {home, home + "/files"}) {
        ASSERT_EQ(::mkdir(folder.c_str(), 0755), 0);
        ASSERT_EQ(::chown(folder.c_str(), alice, alice), 0);
    }
    ASSERT_EQ(::symlink("files", (home + "/.Trash").c_str()), 0);
    ASSERT_EQ(::lchown((home + "/.Trash").c_str(), alice, alice), 0);
    makeLink("home", home);
    makeFolder("item");
    makeFile("item/file", alice);
    makeLink("item/link", "file", alice);
    ASSERT_EQ(run({"/bin/mv", "-f", at("item"), at("home/.Trash/item")}), 0);
    EXPECT_FALSE(exists(at("item")));
    EXPECT_EQ(textOf(home + "/files/item/link"), "text");
    EXPECT_EQ(statOf(home + "/files/item/file").st_uid, alice);
    EXPECT_EQ(run({"/bin/mv", "-f", makeFile("single"), at("home/.Trash")}), 0);
    EXPECT_TRUE(exists(home + "/files/single"));
}

TEST_F(FileCommands, MoveOverALinkWithoutFollowingIt) {
    makeFile("item", 0, "new");
    makeFile("target", 0, "old");
    makeLink("link", "target");
    ASSERT_EQ(run({"/bin/mv", "-f", at("item"), at("link")}), 0);
    EXPECT_EQ(textOf(at("target")), "old");
    EXPECT_EQ(textOf(at("link")), "new");
}

TEST_F(FileCommands, RemoveAFolderWithAllThatIsInIt) {
    makeFolder("home", alice);
    makeFolder("home/item");
    makeFile("home/item/file");
    ASSERT_EQ(run({"/bin/rm", "-Rdf", at("home/item")}), 0);
    EXPECT_FALSE(exists(at("home/item")));
}

TEST_F(FileCommands, RemoveALinkAndNotWhatItLeadsTo) {
    makeFolder("home", alice);
    makeFolder("system");
    makeFile("system/file");
    makeLink("home/link", at("system"), alice);
    ASSERT_EQ(run({"/bin/rm", "-Rdf", at("home/link")}), 0);
    EXPECT_FALSE(exists(at("home/link")));
    EXPECT_TRUE(exists(at("system/file")));
}

TEST_F(FileCommands, MakeFoldersInFolders) {
    std::string path = at("a");
    for (int depth = 0; depth < 100; ++depth) {
        path += "/folder";
    }
    ASSERT_EQ(run({"/bin/mkdir", "-p", path}), 0);
    EXPECT_TRUE(exists(path));
    EXPECT_EQ(run({"/bin/mkdir", "-p", path}), 0);
}

TEST_F(FileCommands, TouchFilesAndFolders) {
    makeFolder("home", alice);
    for (const auto& path : {makeFile("file"), makeFile("home/file"), makeFolder("home/folder")}) {
        timespec longAgo[2]{{1000, 0}, {1000, 0}};
        ::utimensat(AT_FDCWD, path.c_str(), longAgo, 0);
        ASSERT_EQ(run({"/usr/bin/touch", "-c", path}), 0) << path;
        EXPECT_GT(statOf(path).st_mtim.tv_sec, 1000) << path;
    }
}

TEST_F(FileCommands, TakeNamesOfAnyBytes) {
    makeFolder("-home", alice);
    const std::string from = makeFile("-home/two\nlines -rf");
    const std::string to = at("-home/\xff\xfe*?$(x)");
    ASSERT_EQ(run(copyOf(from, to)), 0);
    EXPECT_EQ(textOf(to), "text");
}

// What they refuse

TEST_F(FileCommands, RefusePathsThatAreNotPlain) {
    EXPECT_EQ(check({"/bin/rm", "-Rdf", "relative"}), -EINVAL);
    EXPECT_EQ(check({"/bin/rm", "-Rdf", at("a/../b")}), -EINVAL);
    EXPECT_EQ(check(copyOf("/etc/passwd", at("./b"))), -EINVAL);
    EXPECT_EQ(check({"/bin/rm", "-Rdf", "/"}), -EINVAL);
    EXPECT_EQ(check({"/bin/rm"}), -EINVAL);
    EXPECT_EQ(check({"/bin/mv", at("a")}), -EINVAL);
}

TEST_F(FileCommands, AreStartedAndFailByThemselvesWhereAFolderIsMissing) {
    makeFile("file");
    for (const std::string path : {"missing/item", "file/item"}) {
        EXPECT_EQ(run(copyOf("/etc/passwd", at(path))), 1) << path;
        EXPECT_EQ(run(copyOf(at(path), at("item"))), 1) << path;
        EXPECT_EQ(run({"/bin/mv", "-f", at("file"), at(path)}), 1) << path;
        EXPECT_EQ(run({"/bin/rm", at(path)}), 1) << path;
    }
    EXPECT_EQ(run({"/bin/mkdir", "-p", at("file/folder")}), 1);
    makeLink("circle", "circle");
    for (const std::string& path :
         {at("circle/item"), at(std::string(300, 'x')), at(std::string(300, 'x') + "/item")}) {
        EXPECT_EQ(run(copyOf("/etc/passwd", path)), 1) << path;
        EXPECT_EQ(run({"/usr/bin/touch", "-c", path}), 1) << path;
    }
    EXPECT_EQ(textOf(at("file")), "text");
    EXPECT_FALSE(exists(at("item")));
}

TEST_F(FileCommands, MayChangeNothingWhereAFolderIsMissing) {
    for (const Command& command :
         {copyOf(at("missing/item"), at("item")), copyOf("/etc/passwd", at("missing/item")),
          Command{"/bin/mv", "-f", at("missing/item"), at("item")}, Command{"/bin/rm", "-Rdf", at("missing/item")},
          Command{"/usr/bin/touch", "-c", at("missing/item")}}) {
        const auto made = confinementFor(command);
        const auto& confinement = std::get<std::optional<Confinement>>(made);
        EXPECT_NE(confinement->watched, 0U) << command[0];
        EXPECT_TRUE(confinement->places.empty()) << command[0];
        EXPECT_TRUE(confinement->onlyRenames || confinement->shield || command[0].ends_with("rm")) << command[0];
    }
}

TEST_F(FileCommands, RefuseWhatIsUnsafeAlsoWhereAFolderIsMissing) {
    makeFolder("home", alice);
    makeLink("home/folder", "/etc", alice);
    EXPECT_EQ(check(copyOf(at("missing/item"), at("home/folder/x"))), -EPERM);
    EXPECT_EQ(check(copyOf(at("missing/item"), "relative")), -EINVAL);
}

TEST_F(FileCommands, RefuseAUsersLinkToTheSystem) {
    makeFolder("home", alice);
    makeFolder("system");
    makeFile("system/file");
    makeLink("home/folder", at("system"), alice);
    makeLink("home/file", at("system/file"), alice);
    for (const Command& command :
         {copyOf("/etc/passwd", at("home/folder/x")), copyOf("/etc/passwd", at("home/folder")),
          copyOf("/etc/passwd", at("home/file")), copyOf(at("home/folder/file"), at("x")),
          Command{"/bin/mv", "-f", at("home/folder/file"), at("x")},
          Command{"/bin/mv", "-f", at("system/file"), at("home/folder")},
          Command{"/bin/rm", "-Rdf", at("home/folder/file")}, Command{"/bin/mkdir", "-p", at("home/folder/new/deep")},
          Command{"/bin/mkdir", "-p", at("home/folder")}, Command{"/usr/bin/touch", "-c", at("home/file")},
          Command{"/usr/bin/touch", "-c", at("home/folder/file")}}) {
        EXPECT_EQ(check(command), -EPERM) << command[0] << " " << command.back();
    }
}

// The rights to the one folder would reach the other, whose owner can lead the tool about in the first.
TEST_F(FileCommands, RefuseAMoveFromAUsersFolderIntoOneThatHoldsIt) {
    makeFolder("home", alice);
    makeFile("home/item", alice);
    EXPECT_EQ(check({"/bin/mv", "-f", at("home/item"), at("item")}), -EPERM);
    EXPECT_EQ(check({"/bin/mv", "-f", makeFile("file"), at("home/file")}), -EPERM);
}

TEST_F(FileCommands, MoveBetweenFoldersOfOneUser) {
    makeFolder("home", alice);
    makeFolder("home/folder", alice);
    makeFile("home/item");
    ASSERT_EQ(run({"/bin/mv", "-f", at("home/item"), at("home/folder/item")}), 0);
    EXPECT_EQ(run({"/bin/mv", "-f", at("home/folder/item"), at("home/folder/renamed")}), 0);
}

TEST_F(FileCommands, AreConfinedUnderEitherOfTheirNames) {
    for (const char* tool : {"rm", "mv", "cp", "mkdir", "touch"}) {
        for (const std::string folder : {"/bin/", "/usr/bin/"}) {
            if (exists(folder + tool)) {
                EXPECT_EQ(check({folder + tool, "x", "y"}), -EINVAL) << folder << tool;
            }
        }
    }
}

TEST_F(FileCommands, AreConfinedAndOthersAreNot) {
    const auto confined = confinementFor({"/bin/rm", "-Rdf", at("item")});
    ASSERT_TRUE(std::get<std::optional<Confinement>>(confined));
    const auto free = confinementFor({"/bin/ls", "relative"});
    EXPECT_FALSE(std::get<std::optional<Confinement>>(free));
}

// In mounts of its own, a child sees a tool that is not the system's under the system's name.
TEST_F(FileCommands, RefuseAToolThatIsNotTheSuperusersOwn) {
    for (const auto& [owner, mode] : {std::pair<uid_t, mode_t>{alice, 0755}, {0, 0775}, {0, 0757}}) {
        const std::string tool = makeFile("tool" + std::to_string(mode) + std::to_string(owner), owner);
        ASSERT_EQ(::chmod(tool.c_str(), mode), 0);
        const pid_t child = ::fork();
        if (child == 0) {
            if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
                ::mount(tool.c_str(), "/usr/bin/touch", nullptr, MS_BIND, nullptr) != 0) {
                ::_exit(2);
            }
            ::_exit(check({"/usr/bin/touch", "-c", at("item")}) == -EPERM ? 0 : 1);
        }
        int status = -1;
        ::waitpid(child, &status, 0);
        if (WEXITSTATUS(status) == 2) {
            GTEST_SKIP() << "mounts of one's own cannot be made here";
        }
        EXPECT_EQ(status, 0) << owner << " " << mode;
    }
}

// What they keep to

TEST_F(FileCommands, CopyIntoAFolderOfThatNameAndChangeNothingBesideIt) {
    makeFolder("bundle", alice);
    makeFile("bundle/file", alice, "new");
    makeFolder("plugins");
    makeFolder("plugins/bundle", alice);
    makeFile("plugins/bundle/file", alice, "old");
    const auto made = confinementFor(copyOf(at("bundle"), at("plugins")));
    const auto& confinement = std::get<std::optional<Confinement>>(made);
    ASSERT_TRUE(confinement->shield);
    for (const auto& place : confinement->places) {
        struct stat found {};
        ASSERT_EQ(::fstat(place.item.get(), &found), 0);
        const bool isWritten = (place.allowed & LANDLOCK_ACCESS_FS_WRITE_FILE) != 0;
        EXPECT_EQ(isWritten, found.st_ino == statOf(at("plugins/bundle")).st_ino);
    }
    ASSERT_EQ(run(copyOf(at("bundle"), at("plugins"))), 0);
    EXPECT_EQ(textOf(at("plugins/bundle/file")), "new");
}

TEST_F(FileCommands, NeedNoShieldToMakeWhatIsNotThere) {
    makeFolder("bundle", alice);
    makeFolder("plugins");
    for (const auto* destination : {"plugins", "plugins/new"}) {
        const auto made = confinementFor(copyOf(at("bundle"), at(destination)));
        EXPECT_FALSE(std::get<std::optional<Confinement>>(made)->shield) << destination;
    }
}

// In mounts of its own, a child sees the folders as two file systems once they have been looked at.
TEST_F(FileCommands, MoveByRenamingOrNotAtAllWithinOneFileSystem) {
    makeFolder("system");
    makeFolder("system/folder");
    makeFile("system/file");
    makeFolder("home", alice);
    makeFolder("home/Trash", alice);
    makeFile("home/Trash/file", alice, "old");
    constexpr int cannotBeTried = 77;
    for (const std::string name : {"folder", "file"}) {
        const std::string from = at("system/" + name);
        const std::string to = at("home/Trash/" + name);
        const pid_t child = ::fork();
        if (child == 0) {
            if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) {
                ::_exit(cannotBeTried);
            }
            const auto made = confinementFor({"/bin/mv", "-f", from, to});
            const auto* confinement = std::get_if<std::optional<Confinement>>(&made);
            if (confinement == nullptr) {
                ::_exit(2);
            }
            const std::string folder = at("home/Trash");
            if ((*confinement)->shield || ::mount(folder.c_str(), folder.c_str(), nullptr, MS_BIND, nullptr) != 0) {
                ::_exit(cannotBeTried);
            }
            if (enterView(**confinement) != 0 || enterConfinement(**confinement) != 0) {
                ::_exit(2);
            }
            ::close(STDERR_FILENO);  // which has only the expected to say
            ::execl("/bin/mv", "/bin/mv", "-f", from.c_str(), to.c_str(), nullptr);
            ::_exit(3);
        }
        int status = -1;
        ::waitpid(child, &status, 0);
        if (WEXITSTATUS(status) == cannotBeTried) {
            GTEST_SKIP() << "items are not renamed here, or mounts of one's own cannot be made";
        }
        EXPECT_EQ(WEXITSTATUS(status), 1) << name;
        EXPECT_TRUE(exists(from)) << name;
    }
    EXPECT_FALSE(exists(at("home/Trash/folder")));
    EXPECT_EQ(textOf(at("home/Trash/file")), "old");
}

// Kernels without Landlock

TEST_F(FileCommands, WorkWithoutLandlockOnTheSuperusersOwnWay) {
    makeFolder("system");
    makeLink("link", "system");
    EXPECT_EQ(check({"/bin/rm", "-Rdf", at("system/item")}, 0), 0);
    EXPECT_EQ(check({"/bin/mkdir", "-p", at("link/new/deep")}, 0), 0);
}

TEST_F(FileCommands, AreRefusedWithoutLandlockWhereOthersCouldInterfere) {
    makeFolder("home", alice);
    makeFolder("home/roots");
    makeFolder("shared", 0, 0775);
    makeFolder("tmp", 0, 01777);
    for (const char* folder : {"home", "home/roots", "shared", "tmp"}) {
        EXPECT_EQ(check({"/bin/rm", "-Rdf", at(std::string(folder) + "/item")}, 0), -EPERM) << folder;
    }
    EXPECT_EQ(check(copyOf(at("home/item"), at("item")), 0), -EPERM);
    makeFolder("item");
    makeFolder("target");
    EXPECT_EQ(check(copyOf(at("item"), at("target")), 0), 0);
    makeFolder("target/item");
    EXPECT_EQ(check(copyOf(at("item"), at("target")), 0), -EPERM);
}

TEST_F(FileCommands, SayWithoutLandlockThatAFolderIsMissing) {
    EXPECT_EQ(check(copyOf("/etc/passwd", at("missing/item")), 0), -ENOENT);
    EXPECT_EQ(check(copyOf(at("missing/item"), at("item")), 0), -ENOENT);
}

TEST_F(FileCommands, AskLandlockOnlyForWhatItsVersionKnows) {
    for (const int version : {1, 2, 3}) {
        const auto made = confinementFor({"/bin/mv", "-f", makeFile("a" + std::to_string(version)), at("b")}, version);
        const auto& confinement = std::get<std::optional<Confinement>>(made);
        EXPECT_LT(confinement->watched, std::uint64_t{1} << (12U + static_cast<unsigned>(version))) << version;
    }
}

}  // namespace
