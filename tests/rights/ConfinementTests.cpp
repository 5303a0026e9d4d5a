#include "platform/linux/rights/helper/Confinement.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include "platform/linux/rights/helper/ToolProcess.h"
#include "tests/rights/RootsFolder.h"

namespace {

using platform::rights::confinementFor;
using platform::rights::landlockVersion;
using platform::rights::startTool;
using tests::alice;
using tests::bob;
using Command = std::vector<std::string>;

class FileCommands : public tests::RootsFolder {
protected:
    void SetUp() override {
        RootsFolder::SetUp();
        if (!IsSkipped() && landlockVersion() == 0) {
            GTEST_SKIP() << "this kernel has no Landlock";
        }
    }

    // How the tool ended; the errno, negative, when it was refused.
    static int run(const Command& command) {
        const auto started = startTool(command, -1);
        if (started.error != 0) {
            return -started.error;
        }
        int status = 0;
        return ::waitpid(started.tool, &status, 0) == started.tool && WIFEXITED(status) ? WEXITSTATUS(status) : 255;
    }
    static Command copyOf(const std::string& from, const std::string& to) {
        return {"/bin/cp", "-f", "-p", "-R", from, to};
    }
    static int check(const Command& command, int landlock = landlockVersion()) {
        const auto made = confinementFor(command, landlock);
        const int* error = std::get_if<int>(&made);
        return error != nullptr ? -*error : 0;
    }
    static bool exists(const std::string& path) {
        struct stat ignored {};
        return ::lstat(path.c_str(), &ignored) == 0;
    }
    static struct stat statOf(const std::string& path) {
        struct stat found {};
        ::lstat(path.c_str(), &found);
        return found;
    }
};

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
    EXPECT_EQ(textOf(at("file")), "text");
    EXPECT_FALSE(exists(at("item")));
}

TEST_F(FileCommands, MayChangeNothingWhereAFolderIsMissing) {
    for (const Command& command :
         {copyOf(at("missing/item"), at("item")), copyOf("/etc/passwd", at("missing/item")),
          Command{"/bin/mv", "-f", at("missing/item"), at("item")}, Command{"/bin/rm", "-Rdf", at("missing/item")},
          Command{"/usr/bin/touch", "-c", at("missing/item")}}) {
        const auto made = confinementFor(command);
        const auto& confinement = std::get<std::optional<platform::rights::Confinement>>(made);
        EXPECT_NE(confinement->watched, 0U) << command[0];
        EXPECT_TRUE(confinement->places.empty()) << command[0];
        EXPECT_EQ(confinement->shield.has_value(), !command[0].ends_with("rm")) << command[0];
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
    ASSERT_TRUE(std::get<std::optional<platform::rights::Confinement>>(confined));
    const auto free = confinementFor({"/bin/ls", "relative"});
    EXPECT_FALSE(std::get<std::optional<platform::rights::Confinement>>(free));
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
}

TEST_F(FileCommands, SayWithoutLandlockThatAFolderIsMissing) {
    EXPECT_EQ(check(copyOf("/etc/passwd", at("missing/item")), 0), -ENOENT);
    EXPECT_EQ(check(copyOf(at("missing/item"), at("item")), 0), -ENOENT);
}

TEST_F(FileCommands, AskLandlockOnlyForWhatItsVersionKnows) {
    for (const int version : {1, 2, 3}) {
        const auto made = confinementFor({"/bin/mv", "-f", makeFile("a" + std::to_string(version)), at("b")}, version);
        const auto& confinement = std::get<std::optional<platform::rights::Confinement>>(made);
        EXPECT_LT(confinement->watched, std::uint64_t{1} << (12U + static_cast<unsigned>(version))) << version;
    }
}

// Attacks: whoever owns a folder exchanges an item in it, as fast as he can, while the tool is at work.

class Attack {
public:
    explicit Attack(std::function<void()> swap)
        : m_thread([this, swap = std::move(swap)] {
              while (!m_over) {
                  swap();
              }
          }) {}
    ~Attack() {
        m_over = true;
        m_thread.join();
    }

private:
    std::atomic<bool> m_over = false;
    std::thread m_thread;
};

class AttackedFileCommands : public FileCommands {
protected:
    static constexpr int attempts = 500;

    void SetUp() override {
        FileCommands::SetUp();
        if (IsSkipped()) {
            return;
        }
        makeFolder("victim", 0, 0700);
        makeFile("victim/item", 0, "precious");
        makeFolder("victim/folder", 0, 0700);
        m_before = pictureOfVictim();
        makeFolder("home", alice);
        makeFolder("home/real", alice);
        makeLink("home/evil", at("victim"), alice);
        makeFile("source", alice, "overwritten");
        ::chmod(at("source").c_str(), 04777);
    }

    // Names, modes, owners, times and contents of all there is.
    std::string pictureOfVictim() const {
        std::string picture;
        for (const auto* name : {"victim", "victim/item", "victim/folder"}) {
            const auto found = statOf(at(name));
            picture += std::string(name) + " " + std::to_string(found.st_mode) + " " + std::to_string(found.st_uid) +
                       " " + std::to_string(found.st_mtim.tv_sec) + "." + std::to_string(found.st_mtim.tv_nsec) + "\n";
        }
        for (const auto& entry : std::filesystem::recursive_directory_iterator(at("victim"))) {
            picture += entry.path().string() + " ";
        }
        return picture + textOf(at("victim/item"));
    }

    void exchange(const std::string& one, const std::string& other) const {
        ::renameat2(AT_FDCWD, at(one).c_str(), AT_FDCWD, at(other).c_str(), RENAME_EXCHANGE);
    }

    void expectVictimUntouched(const char* attack) const { EXPECT_EQ(pictureOfVictim(), m_before) << attack; }

private:
    std::string m_before;
};

TEST_F(AttackedFileCommands, LeaveTheVictimAloneWhenTheParentIsExchanged) {
    const Attack attack([this] { exchange("home/real", "home/evil"); });
    for (int i = 0; i < attempts; ++i) {
        run(copyOf(at("source"), at("home/real/item")));
        run({"/bin/rm", "-Rdf", at("home/real/item")});
        run({"/bin/mkdir", "-p", at("home/real/folder/new")});
        run({"/usr/bin/touch", "-c", at("home/real/folder")});
    }
    expectVictimUntouched("parent");
}

TEST_F(AttackedFileCommands, LeaveTheVictimAloneWhenAMovesFoldersAreExchanged) {
    makeFolder("elsewhere", alice);
    const Attack attack([this] { exchange("home/real", "home/evil"); });
    for (int i = 0; i < attempts; ++i) {
        makeFile("elsewhere/item", alice);
        run({"/bin/mv", "-f", at("elsewhere/item"), at("home/real/item")});
        run({"/bin/mv", "-f", at("home/real/item"), at("elsewhere/item")});
    }
    expectVictimUntouched("move");
}

TEST_F(AttackedFileCommands, LeaveTheVictimAloneWhenTheItemItselfIsExchanged) {
    makeFile("home/item", alice, "own");
    makeLink("home/link", at("victim/item"), alice);
    const Attack attack([this] { exchange("home/item", "home/link"); });
    for (int i = 0; i < attempts; ++i) {
        run(copyOf(at("source"), at("home/item")));
        run({"/usr/bin/touch", "-c", at("home/item")});
        if (!exists(at("home/item"))) {
            makeFile("home/item", alice, "own");
        }
    }
    expectVictimUntouched("item");
}

// Modes and owners are set by path once a folder has been copied: nothing but the shield keeps them at home.
TEST_F(AttackedFileCommands, LeaveTheVictimAloneWhenTheCopyIsExchangedWhileItIsMade) {
    makeFolder("tree", alice, 0777);
    for (int i = 0; i < 50; ++i) {
        makeFile("tree/" + std::to_string(i), alice);
    }
    std::atomic<int> swaps = 0;
    const Attack attack([&] {
        if (exists(at("home/copy"))) {
            exchange("home/copy", "home/evil");
            ++swaps;
        }
    });
    for (int i = 0; i < attempts / 5; ++i) {
        run(copyOf(at("tree"), at("home/copy")));
        run({"/bin/rm", "-Rdf", at("home/copy")});
        run({"/bin/rm", "-Rdf", at("home/evil")});
        ::symlink(at("victim").c_str(), at("home/evil").c_str());
    }
    EXPECT_GT(swaps, 0);
    expectVictimUntouched("copy");
}

TEST_F(AttackedFileCommands, ReadNothingElseWhenTheSourceIsExchanged) {
    makeFile("home/real/item", alice, "own");
    const Attack attack([this] { exchange("home/real", "home/evil"); });
    int copied = 0;
    for (int i = 0; i < attempts; ++i) {
        run(copyOf(at("home/real/item"), at("copy")));
        const std::string text = textOf(at("copy"));
        copied += text == "own" ? 1 : 0;
        ASSERT_NE(text, "precious");
    }
    EXPECT_GT(copied, 0);
}

// The folder is missing one moment and leads to the victim the next.
TEST_F(AttackedFileCommands, LeaveTheVictimAloneWhenAMissingFolderComesAndGoes) {
    makeFolder("tree", alice, 0777);
    makeFolder("tree/folder", alice, 0777);
    const Attack attack([this] {
        ::rename(at("home/evil").c_str(), at("home/gone").c_str());
        ::rename(at("home/gone").c_str(), at("home/evil").c_str());
    });
    for (int i = 0; i < attempts; ++i) {
        run({"/usr/bin/touch", "-c", at("home/evil/item")});
        run(copyOf(at("source"), at("home/evil/item")));
        run(copyOf(at("tree/folder"), at("home/evil/folder")));
        run({"/bin/mv", "-f", at("home/evil/item"), at("taken")});
        run({"/bin/rm", "-Rdf", at("home/evil/item")});
    }
    expectVictimUntouched("missing");
}

TEST_F(AttackedFileCommands, LeaveTheVictimAloneAmongTemporaryFiles) {
    makeFolder("tmp", 0, 01777);
    makeFile("tmp/item", alice, "own");
    makeLink("tmp/link", at("victim/item"), alice);
    const Attack attack([this] { exchange("tmp/item", "tmp/link"); });
    for (int i = 0; i < attempts; ++i) {
        run(copyOf(at("source"), at("tmp/item")));
        run({"/bin/mkdir", "-p", at("tmp/item/new")});
        if (!exists(at("tmp/item"))) {
            makeFile("tmp/item", alice, "own");
        }
    }
    expectVictimUntouched("temporary");
}

}  // namespace
