#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "tests/rights/FileCommands.h"

namespace {

using tests::alice;
using tests::FileCommands;

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

// A folder of a user, with something in it that can be exchanged, below one that is the superuser's own.
TEST_F(AttackedFileCommands, LeaveTheVictimAloneWhenACopyIsMergedWithAUsersFolder) {
    makeFolder("tree", alice, 0777);
    makeFolder("tree/sub", alice, 0777);
    for (int i = 0; i < 50; ++i) {
        makeFile("tree/sub/" + std::to_string(i), alice);
    }
    makeFolder("plugins");
    makeFolder("plugins/tree", alice);
    makeFolder("plugins/tree/sub", alice);
    makeLink("plugins/tree/evil", at("victim"), alice);
    const Attack attack([this] { exchange("plugins/tree/sub", "plugins/tree/evil"); });
    for (int i = 0; i < attempts / 5; ++i) {
        run(copyOf(at("tree"), at("plugins")));
    }
    expectVictimUntouched("merge");
}

// A move that cannot be a renaming is a copy, whose modes and owners are set by path.
TEST_F(AttackedFileCommands, LeaveTheVictimAloneWhenAMoveIsKeptFromBeingARenaming) {
    const fakes::TemporaryFolder elsewhere("/dev/shm");
    if (statOf(elsewhere.path()).st_dev == statOf(top()).st_dev) {
        GTEST_SKIP() << "there is no second file system";
    }
    makeLink("home/away", elsewhere.path(), alice);
    makeFolder("system");
    const Attack attack([this] {
        exchange("home/real", "home/away");
        exchange("home/real", "home/away");
        if (exists(at("home/real/item"))) {
            ::rename(at("home/real/item").c_str(), at("home/real/gone").c_str());
            ::symlink(at("victim").c_str(), at("home/real/item").c_str());
        }
    });
    for (int i = 0; i < attempts; ++i) {
        makeFolder("system/item", 0, 0777);
        for (int file = 0; file < 20; ++file) {
            makeFile("system/item/" + std::to_string(file));
        }
        run({"/bin/mv", "-f", at("system/item"), at("home/real/item")});
        for (const auto* left : {"system/item", "home/real/item", "home/real/gone", "home/away/item"}) {
            std::error_code ignored;
            std::filesystem::remove_all(at(left), ignored);
        }
    }
    expectVictimUntouched("renaming");
}

// What the tool has open has a name in /proc, through which it could be changed in spite of the shield.
TEST_F(AttackedFileCommands, LeaveAloneWhatTheToolHasOpen) {
    makeFile("home/item", alice);
    makeLink("home/link", "/proc/self/fd/0", alice);
    const auto before = statOf("/dev/null");
    {
        const Attack attack([this] { exchange("home/item", "home/link"); });
        for (int i = 0; i < attempts; ++i) {
            run({"/usr/bin/touch", "-c", at("home/item")});
        }
    }
    const auto after = statOf("/dev/null");
    EXPECT_EQ(before.st_mtim.tv_sec, after.st_mtim.tv_sec);
    EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
}

TEST_F(AttackedFileCommands, ListNothingElseWhenTheSourceIsExchanged) {
    makeFolder("home/tree", alice);
    makeFolder("home/tree/sub", alice);
    makeFile("home/tree/sub/own", alice);
    makeLink("home/tree/evil", at("victim"), alice);
    makeFolder("target");
    const Attack attack([this] { exchange("home/tree/sub", "home/tree/evil"); });
    int copied = 0;
    for (int i = 0; i < attempts; ++i) {
        run(copyOf(at("home/tree"), at("target/copy")));
        copied += exists(at("target/copy/sub/own")) ? 1 : 0;
        for (const auto* folder : {"target/copy/sub", "target/copy/evil"}) {
            ASSERT_TRUE(std::filesystem::is_symlink(at(folder)) || !exists(at(folder) + "/folder"));
        }
        std::filesystem::remove_all(at("target/copy"));
    }
    EXPECT_GT(copied, 0);
}

// The folder that the source lies in is the superuser's own; what lies in the source is not.
TEST_F(AttackedFileCommands, ReadNothingElseWhenSomethingInTheSourceIsExchanged) {
    makeFolder("system");
    makeFolder("system/tree", alice);
    makeFolder("system/tree/sub", alice);
    makeFile("system/tree/sub/item", alice, "own");
    makeLink("system/tree/evil", at("victim"), alice);
    makeFolder("target");
    const Attack attack([this] { exchange("system/tree/sub", "system/tree/evil"); });
    int copied = 0;
    for (int i = 0; i < attempts; ++i) {
        run(copyOf(at("system/tree"), at("target/copy")));
        copied += textOf(at("target/copy/sub/item")) == "own" ? 1 : 0;
        for (const auto* folder : {"target/copy/sub", "target/copy/evil"}) {
            ASSERT_TRUE(std::filesystem::is_symlink(at(folder)) || textOf(at(folder) + "/item") != "precious");
        }
        std::filesystem::remove_all(at("target/copy"));
    }
    EXPECT_GT(copied, 0);
}

// What a move takes away from is not read-only to the tool: the owner of the folder that it goes to must not lead it
// back.
TEST_F(AttackedFileCommands, LeaveWhatLiesBesideTheSourceAloneWhenAMoveGoesToAnotherFileSystem) {
    const fakes::TemporaryFolder elsewhere("/dev/shm");
    if (statOf(elsewhere.path()).st_dev == statOf(top()).st_dev) {
        GTEST_SKIP() << "there is no second file system";
    }
    ASSERT_EQ(::chmod(elsewhere.path().c_str(), 0755), 0);
    const std::string home = elsewhere / "home";
    const std::string real = home + "/real";
    for (const auto& folder : {home, real}) {
        ASSERT_EQ(::mkdir(folder.c_str(), 0755), 0);
        ASSERT_EQ(::chown(folder.c_str(), alice, alice), 0);
    }
    ASSERT_EQ(::symlink(top().c_str(), (home + "/evil").c_str()), 0);
    std::mutex cleaning;
    const Attack attack([&] {
        const std::lock_guard lock(cleaning);
        if (exists(real + "/victim")) {
            ::renameat2(AT_FDCWD, real.c_str(), AT_FDCWD, (home + "/evil").c_str(), RENAME_EXCHANGE);
            ::renameat2(AT_FDCWD, real.c_str(), AT_FDCWD, (home + "/evil").c_str(), RENAME_EXCHANGE);
            ::rename((real + "/victim").c_str(), (real + "/gone").c_str());
            ::symlink(at("victim").c_str(), (real + "/victim").c_str());
        }
    });
    int moved = 0;
    for (int i = 0; i < attempts; ++i) {
        makeFolder("item", 0, 0777);
        for (int file = 0; file < 20; ++file) {
            makeFile("item/" + std::to_string(file));
        }
        run({"/bin/mv", "-f", at("item"), real + "/victim"});
        const std::lock_guard lock(cleaning);
        moved += exists(real + "/gone") ? 1 : 0;
        for (const auto& left : {at("item"), real + "/victim", real + "/gone"}) {
            std::error_code ignored;
            std::filesystem::remove_all(left, ignored);
        }
    }
    EXPECT_GT(moved, 0);
    expectVictimUntouched("beside");
}

}  // namespace
