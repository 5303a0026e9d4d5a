#include "tools/wickfield-bundle/check/Inventory.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <future>
#include <new>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "platform/linux/services/LinuxHost.h"
#include "platform/ports/Host.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tools/wickfield-bundle/check/InventoryWalk.h"

namespace wickfield_bundle {
namespace {

using platform::FileType;
using testing::ElementsAre;
using testing::IsEmpty;

class Inventories : public testing::Test {
protected:
    void write(const std::string& name, const std::string& text = "text") {
        std::filesystem::create_directories(std::filesystem::path(folder / name).parent_path());
        std::ofstream(folder / name) << text;
    }
    std::vector<std::string> paths() {
        std::vector<std::string> paths;
        for (const auto& entry : takeInventory(folder.path()).entries) {
            paths.push_back(entry.path);
        }
        return paths;
    }

    fakes::TemporaryFolder folder;
    platform::ScopedHost scope{platform::linux_host::services()};
};

TEST_F(Inventories, NameAFolderBeforeWhatItHoldsAndOthersByTheirBytes) {
    write("b/2");
    write("b/1");
    write("b-c");
    write("a");
    write("B");
    EXPECT_THAT(paths(), ElementsAre("B", "a", "b", "b/1", "b/2", "b-c"));
}

TEST_F(Inventories, AreInTheOrderInWhichThingsAreFound) {
    for (const char* const name : {"a/b", "a b", "a.b", "a", "a/b/c", "ab", "a\x01/x", "\xff"}) {
        if (!std::filesystem::exists(folder / name)) {
            std::filesystem::create_directories(folder / name);
        }
    }
    const Inventory inventory = takeInventory(folder.path());
    ASSERT_EQ(inventory.entries.size(), 9U);
    for (const auto& entry : inventory.entries) {
        EXPECT_EQ(inventory.find(entry.path), &entry) << entry.path;
    }
    EXPECT_EQ(inventory.find("a/b/d"), nullptr);
    EXPECT_EQ(inventory.find(""), nullptr);
}

TEST_F(Inventories, TellWhatAFileIs) {
    write("file", "seven..");
    ::chmod((folder / "file").c_str(), 04751);
    const Inventory inventory = takeInventory(folder.path());
    ASSERT_EQ(inventory.entries.size(), 1U);
    const InventoryEntry& entry = inventory.entries.front();
    EXPECT_EQ(entry.type, FileType::regular);
    EXPECT_EQ(entry.size, 7U);
    EXPECT_EQ(entry.permissions, 04751U);
    EXPECT_FALSE(entry.isQuarantined);
    struct stat status {};
    ASSERT_EQ(::stat((folder / "file").c_str(), &status), 0);
    EXPECT_EQ(entry.identity, (platform::FileIdentity{status.st_dev, status.st_ino}));
}

TEST_F(Inventories, HaveALinkAsALinkAndDoNotFollowIt) {
    write("real/inside");
    std::filesystem::create_symlink("real", folder / "link");
    std::filesystem::create_symlink("..", folder / "real/up");
    std::filesystem::create_symlink(std::string(300, 'x') + "/" + std::string(3000, 'y'), folder / "nowhere");
    const Inventory inventory = takeInventory(folder.path());
    EXPECT_EQ(inventory.entries.size(), 5U);
    EXPECT_EQ(inventory.find("link")->type, FileType::symbolicLink);
    EXPECT_EQ(inventory.find("link")->linkTarget, "real");
    EXPECT_EQ(inventory.find("real/up")->linkTarget, "..");
    EXPECT_EQ(inventory.find("nowhere")->linkTarget.size(), 3301U);
    EXPECT_THAT(inventory.unreadable, IsEmpty());
}

TEST_F(Inventories, NeverOpenAPipe) {
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0644), 0);
    const Inventory inventory = takeInventory(folder.path());  // would wait for ever for somebody to write
    ASSERT_EQ(inventory.entries.size(), 1U);
    EXPECT_EQ(inventory.entries.front().type, FileType::other);
}

TEST_F(Inventories, SeeTheMarkOfADownload) {
    write("marked");
    write("plain");
    std::filesystem::create_directory(folder / "folder");
    for (const char* const name : {"marked", "folder"}) {
        if (::setxattr((folder / name).c_str(), "user.com.apple.quarantine", "0081", 4, 0) != 0) {
            GTEST_SKIP() << "the file system has no attributes";
        }
    }
    const Inventory inventory = takeInventory(folder.path());
    EXPECT_TRUE(inventory.find("marked")->isQuarantined);
    EXPECT_TRUE(inventory.find("folder")->isQuarantined);
    EXPECT_FALSE(inventory.find("plain")->isQuarantined);
}

TEST_F(Inventories, NameAFolderThatCannotBeReadAndGoOn) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser reads everything";
    }
    write("closed/inside");
    write("open");
    ::chmod((folder / "closed").c_str(), 0);
    const Inventory inventory = takeInventory(folder.path());
    ::chmod((folder / "closed").c_str(), 0755);
    EXPECT_EQ(inventory.entries.size(), 2U);
    ASSERT_EQ(inventory.unreadable.size(), 1U);
    EXPECT_EQ(inventory.unreadable.front().path, "closed");
    EXPECT_EQ(inventory.unreadable.front().reason, "Permission denied");
}

TEST_F(Inventories, NameAFolderThatIsGone) {
    const Inventory inventory = takeInventory(folder / "gone");
    EXPECT_THAT(inventory.entries, IsEmpty());
    ASSERT_EQ(inventory.unreadable.size(), 1U);
    EXPECT_EQ(inventory.unreadable.front().path, "");
}

// Big enough that every thread gets its share, and of no shape that suits one of them.
TEST_F(Inventories, NameEverythingOnceHoweverTheThreadsShareTheWork) {
    std::mt19937 numbers(7);
    std::vector<std::string> folders{""};
    std::vector<std::string> expected;
    for (int number = 0; number < 3000; ++number) {
        const std::string name = std::to_string(numbers() % 10'000) + "-" + std::to_string(number);
        const std::string path = folders[numbers() % folders.size()] + name;
        expected.push_back(path);
        if (numbers() % 4 == 0) {
            std::filesystem::create_directory(folder / path);
            folders.push_back(path + "/");
        } else {
            std::ofstream(folder / path) << path;
        }
    }
    std::ranges::sort(expected, comesBefore);
    for (int round = 0; round < 20; ++round) {
        ASSERT_EQ(paths(), expected);
    }
}

TEST_F(Inventories, KnowFoldersThatPeopleSeeAsOneItem) {
    write("Reverb.vst3/Contents/Info.plist");
    write("plain/Reverb.vst3");
    const Inventory inventory = takeInventory(folder.path());
    EXPECT_TRUE(inventory.find("Reverb.vst3")->isPackage);
    EXPECT_FALSE(inventory.find("Reverb.vst3/Contents")->isPackage);
    EXPECT_FALSE(inventory.find("plain")->isPackage);
    EXPECT_FALSE(inventory.find("plain/Reverb.vst3")->isPackage);
}

TEST(FolderShares, AreAllTakenBeforeAnybodyStopsWaiting) {
    FolderShares shares;
    shares.give({});
    std::atomic<int> taken = 0;
    const auto work = [&] {
        shares.takeAll([&](const FolderShare&) {
            for (int next = 0; next < 2 && taken < 1000; ++next) {
                shares.give({});
            }
            ++taken;
        });
    };
    std::vector<std::future<void>> threads;
    for (int index = 0; index < 4; ++index) {
        threads.push_back(std::async(std::launch::async, work));
    }
    for (auto& thread : threads) {
        thread.get();
    }
    EXPECT_GE(taken, 1000);
    bool isAnyLeft = false;
    shares.takeAll([&](const FolderShare&) { isAnyLeft = true; });
    EXPECT_FALSE(isAnyLeft);
}

// Another thread may well be at work on what it gave.
TEST(FolderShares, KeepThePlacesForWhatIsFoundWhenTheirGiverFails) {
    FolderShares shares;
    shares.give({});
    EXPECT_THROW(shares.takeAll([&](const FolderShare&) {
        shares.give({.part = &shares.addPart()});
        throw std::bad_alloc();
    }),
                 std::bad_alloc);
    shares.takeAll([](const FolderShare& share) { share.part->found.entries.emplace_back(); });
    EXPECT_EQ(shares.countEntries(), 1U);
}

TEST(FolderShares, AreNotWaitedForWhenTheirGiverFails) {
    FolderShares shares;
    shares.give({});
    std::promise<void> isBusy;
    auto failing = std::async(std::launch::async, [&] {
        shares.takeAll([&](const FolderShare&) {
            isBusy.set_value();
            while (!shares.areWanted()) {
                std::this_thread::yield();
            }
            throw std::bad_alloc();
        });
    });
    isBusy.get_future().wait();
    shares.takeAll([](const FolderShare&) { FAIL() << "there is none"; });
    EXPECT_THROW(failing.get(), std::bad_alloc);
}

// A chain of folders that no path can name.
class DeepInventories : public Inventories {
protected:
    void dig(int levels, const std::string& name, const std::vector<const char*>& files = {}) {
        int present = ::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY);
        for (int level = 0; level < levels; ++level) {
            for (const char* const file : files) {
                ::close(::openat(present, file, O_CREAT | O_WRONLY, 0644));
            }
            ASSERT_EQ(::mkdirat(present, name.c_str(), 0755), 0);
            const int next = ::openat(present, name.c_str(), O_RDONLY | O_DIRECTORY);
            ::close(present);
            present = next;
        }
        const int file = ::openat(present, "bottom", O_CREAT | O_WRONLY, 0644);
        ::close(file);
        ::close(present);
    }
    // Step by step as well, since no path leads there.
    void TearDown() override {
        const std::string command = "rm -rf '" + folder.path() + "'/*";
        EXPECT_EQ(std::system(command.c_str()), 0);
    }
};

TEST_F(DeepInventories, GoBeyondWhatAPathCanName) {
    dig(1000, "folder");
    write("zebra");
    const Inventory inventory = takeInventory(folder.path());
    EXPECT_EQ(inventory.entries.size(), 1002U);
    EXPECT_EQ(inventory.entries[1000].name(), "bottom");
    EXPECT_EQ(inventory.entries[1000].path.size(), 1000 * 7 + 6U);
    EXPECT_EQ(inventory.entries.back().path, "zebra");
    EXPECT_THAT(inventory.unreadable, IsEmpty());
    EXPECT_THAT(inventory.tooDeep, IsEmpty());
}

TEST_F(DeepInventories, NeedFewOpenFiles) {
    dig(60, "folder");
    struct rlimit before {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
    const struct rlimit few { .rlim_cur = 40, .rlim_max = before.rlim_max };
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &few), 0);
    const Inventory inventory = takeInventory(folder.path());
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
    EXPECT_EQ(inventory.entries.size(), 61U);
    EXPECT_THAT(inventory.unreadable, IsEmpty());
}

// What one thread gives, another gives half of, and so on with every folder on the way down.
TEST_F(DeepInventories, NeedLittleMemoryForCallsHoweverOftenTheWorkIsShared) {
    dig(2000, "z", {"a", "b", "c"});
    pthread_attr_t attributes;
    ASSERT_EQ(::pthread_attr_init(&attributes), 0);
    ASSERT_EQ(::pthread_attr_setstacksize(&attributes, std::size_t{128} * 1024), 0);
    std::pair<std::string, std::size_t> work{folder.path(), 0};
    const auto run = [](void* what) -> void* {
        auto& [path, found] = *static_cast<std::pair<std::string, std::size_t>*>(what);
        found = takeInventory(path).entries.size();
        return nullptr;
    };
    pthread_t thread{};
    ASSERT_EQ(::pthread_create(&thread, &attributes, run, &work), 0);
    ::pthread_join(thread, nullptr);
    ::pthread_attr_destroy(&attributes);
    EXPECT_EQ(work.second, 2000 * 4 + 1U);
}

TEST_F(DeepInventories, EndWhereNothingCouldBeUsedAnyMore) {
    dig(4200, "f");
    write("zebra");
    const Inventory inventory = takeInventory(folder.path());
    ASSERT_EQ(inventory.tooDeep.size(), 1U);
    EXPECT_GE(inventory.tooDeep.front().size(), Inventory::longestPath);
    EXPECT_EQ(inventory.entries.back().path, "zebra");
    EXPECT_THAT(inventory.unreadable, IsEmpty());
}

TEST(WalkingOrder, HasAFoldersContentsBetweenItAndItsNextSibling) {
    EXPECT_TRUE(comesBefore("a", "a/b"));
    EXPECT_TRUE(comesBefore("a/b", "a b"));
    EXPECT_TRUE(comesBefore("a/z", "a\x01"));
    EXPECT_TRUE(comesBefore("a", "\xff"));
    EXPECT_FALSE(comesBefore("a", "a"));
    EXPECT_FALSE(comesBefore("a/b", "a"));
    EXPECT_FALSE(comesBefore("b", "a/b"));
}

TEST(Places, LieInAFolderByWholeNames) {
    EXPECT_TRUE(liesWithin("a/b", "a"));
    EXPECT_FALSE(liesWithin("ab", "a"));
    EXPECT_FALSE(liesWithin("a", "a"));
}

}  // namespace
}  // namespace wickfield_bundle
