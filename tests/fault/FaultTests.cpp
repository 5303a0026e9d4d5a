// Every operation on files, with each of the calls that it makes failing in turn, or the process killed there.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>

#include "platform/linux/services/workspace/Mounts.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/fault/FaultRun.h"
#include "tests/fault/TreeSnapshot.h"

namespace {

using fault::Outcome;
using fault::snapshot;

void writeFile(const std::string& path, std::size_t size) {
    std::ofstream(path, std::ios::binary) << std::string(size, 'w');
    (void)::setxattr(path.c_str(), "user.mark", "marked", 6, 0);
    ASSERT_EQ(::chmod(path.c_str(), 0640), 0);
}

// A package with a small and a large file, a link, an empty folder and a read-only one that holds a file.
void makePackage(const std::string& path) {
    std::filesystem::create_directories(path + "/Contents/Empty");
    std::filesystem::create_directories(path + "/Contents/Closed");
    writeFile(path + "/Contents/small", 100);
    writeFile(path + "/Contents/large", 200'000);
    writeFile(path + "/Contents/Closed/file", 10);
    std::filesystem::create_symlink("small", path + "/Contents/link");
    ASSERT_EQ(::chmod((path + "/Contents/Closed").c_str(), 0555), 0);
}

std::vector<std::string> hiddenNames(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.path().filename().string().starts_with(".wickfield-")) {
            names.push_back(entry.path().filename().string());
        }
    }
    return names;
}

class Faults : public testing::Test {
protected:
    void SetUp() override {
        if (const auto reason = fault::obstacle()) {
            GTEST_SKIP() << *reason;
        }
    }
    void TearDown() override { clear(); }

    // A fresh folder for the next run, and one on another file system.
    void start() {
        clear();
        m_folder = std::make_unique<fakes::TemporaryFolder>();
    }
    void startOnTwoFileSystems() {
        start();
        m_far = std::make_unique<fakes::TemporaryFolder>("/dev/shm");
    }
    std::string at(const std::string& name) const { return *m_folder / name; }
    std::string farAt(const std::string& name) const { return *m_far / name; }

    static bool hasTwoFileSystems() {
        const std::string here = std::filesystem::temp_directory_path().string();
        return ::access("/dev/shm", W_OK) == 0 && platform::linux_host::mountPointOf(here) == "/" &&
               !platform::linux_host::areOnSameMount(here, "/dev/shm");
    }

    // After a copy: the source as it was, the destination absent or complete.
    void checkCopy(const Outcome& outcome, const std::string& destination, const std::string& litterIn) const {
        EXPECT_EQ(snapshot(at("source")), m_source);
        const std::string copy = snapshot(destination);
        EXPECT_TRUE(copy.empty() || copy == m_source) << copy;
        if (!outcome.killed) {
            EXPECT_EQ(copy.empty(), outcome.status != 0);
            EXPECT_TRUE(hiddenNames(litterIn).empty());
        }
    }
    void checkSecondCopy(const Outcome& second, const std::string& destination) const {
        EXPECT_EQ(snapshot(destination), m_source);
        EXPECT_TRUE(second.status == 0 || second.status == 1);  // 1: it had been complete
    }

    std::string m_source;

private:
    // Read-only folders would stand in the way of an ordinary user's clean-up.
    void clear() {
        for (const auto* folder : {m_folder.get(), m_far.get()}) {
            if (folder != nullptr) {
                open(folder->path());
            }
        }
        m_folder.reset();
        m_far.reset();
    }
    static void open(const std::string& folder) {
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all, std::filesystem::perm_options::add);
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (entry.is_directory() && !entry.is_symlink()) {
                open(entry.path().string());
            }
        }
    }

    std::unique_ptr<fakes::TemporaryFolder> m_folder;
    std::unique_ptr<fakes::TemporaryFolder> m_far;
};

TEST_F(Faults, CopiedFileIsThereWholeOrNotAtAllAndLeavesNothingElse) {
    const int reached = fault::runEveryFault({
        .prepare =
            [&] {
                start();
                writeFile(at("source"), 200'000);
                m_source = snapshot(at("source"));
                return std::vector<std::string>{"copy", at("source"), at("copy")};
            },
        .check =
            [&](const Outcome& outcome) {
                checkCopy(outcome, at("copy"), at("."));
                EXPECT_TRUE(hiddenNames(at(".")).empty());  // a kill leaves nothing either
            },
        .checkSecond = [&](const Outcome&, const Outcome& second) { checkSecondCopy(second, at("copy")); },
    });
    EXPECT_GT(reached, 25);
}

TEST_F(Faults, CopiedPackageIsThereWholeOrNotAtAll) {
    const int reached = fault::runEveryFault({
        .prepare =
            [&] {
                start();
                makePackage(at("source"));
                m_source = snapshot(at("source"));
                return std::vector<std::string>{"copy", at("source"), at("copy")};
            },
        .check = [&](const Outcome& outcome) { checkCopy(outcome, at("copy"), at(".")); },
        .checkSecond = [&](const Outcome&, const Outcome& second) { checkSecondCopy(second, at("copy")); },
    });
    EXPECT_GT(reached, 200);
}

TEST_F(Faults, CopiedLinkIsThereWholeOrNotAtAll) {
    const int reached = fault::runEveryFault({
        .prepare =
            [&] {
                start();
                std::filesystem::create_symlink("nowhere", at("source"));
                m_source = snapshot(at("source"));
                return std::vector<std::string>{"copy", at("source"), at("copy")};
            },
        .check = [&](const Outcome& outcome) { checkCopy(outcome, at("copy"), at(".")); },
        .checkSecond = [&](const Outcome&, const Outcome& second) { checkSecondCopy(second, at("copy")); },
    });
    EXPECT_GT(reached, 10);
}

TEST_F(Faults, MovedPackageIsAtOneOfTheTwoPlaces) {
    const int reached = fault::runEveryFault({
        .prepare =
            [&] {
                start();
                makePackage(at("source"));
                m_source = snapshot(at("source"));
                return std::vector<std::string>{"move", at("source"), at("moved")};
            },
        .check =
            [&](const Outcome& outcome) {
                const bool stayed = snapshot(at("source")) == m_source;
                const bool arrived = snapshot(at("moved")) == m_source;
                EXPECT_NE(stayed, arrived);
                EXPECT_TRUE(outcome.killed || arrived == (outcome.status == 0));
            },
        .checkSecond =
            [&](const Outcome&, const Outcome&) {
                EXPECT_EQ(snapshot(at("moved")), m_source);
                EXPECT_EQ(snapshot(at("source")), "");
            },
    });
    EXPECT_GE(reached, 5);
}

TEST_F(Faults, PackageMovedAcrossFileSystemsIsNeverLost) {
    if (!hasTwoFileSystems()) {
        GTEST_SKIP() << "no second file system at /dev/shm";
    }
    const int reached = fault::runEveryFault({
        .prepare =
            [&] {
                startOnTwoFileSystems();
                makePackage(at("source"));
                m_source = snapshot(at("source"));
                return std::vector<std::string>{"move", at("source"), farAt("moved")};
            },
        .check =
            [&](const Outcome& outcome) {
                const std::string source = snapshot(at("source"));
                const std::string moved = snapshot(farAt("moved"));
                EXPECT_TRUE(source == m_source || source.empty()) << source;
                EXPECT_TRUE(moved == m_source || moved.empty()) << moved;
                EXPECT_TRUE(source == m_source || moved == m_source);
                if (!outcome.killed) {
                    EXPECT_NE(source, moved);  // one place, not two
                    EXPECT_TRUE(hiddenNames(farAt(".")).empty());
                    EXPECT_TRUE(outcome.status != 0 || hiddenNames(at(".")).empty());
                }
            },
        .checkSecond = [&](const Outcome&, const Outcome&) { EXPECT_EQ(snapshot(farAt("moved")), m_source); },
    });
    EXPECT_GT(reached, 250);
}

TEST_F(Faults, FileMovedAcrossFileSystemsIsAtOnePlaceAndNoRestIsLeft) {
    if (!hasTwoFileSystems()) {
        GTEST_SKIP() << "no second file system at /dev/shm";
    }
    const int reached = fault::runEveryFault({
        .prepare =
            [&] {
                startOnTwoFileSystems();
                writeFile(at("source"), 200'000);
                m_source = snapshot(at("source"));
                return std::vector<std::string>{"move", at("source"), farAt("moved")};
            },
        .check =
            [&](const Outcome& outcome) {
                const bool stayed = snapshot(at("source")) == m_source;
                const bool arrived = snapshot(farAt("moved")) == m_source;
                EXPECT_TRUE(stayed || arrived);
                EXPECT_TRUE(outcome.killed || stayed == (outcome.status != 0));
                EXPECT_TRUE(outcome.killed || stayed != arrived);
                EXPECT_TRUE(hiddenNames(at(".")).empty());
                EXPECT_TRUE(hiddenNames(farAt(".")).empty());
            },
        .checkSecond = [&](const Outcome&, const Outcome&) { EXPECT_EQ(snapshot(farAt("moved")), m_source); },
    });
    EXPECT_GT(reached, 25);
}

// The item with its old name in the Trash, whatever number was added to it.
std::string trashed(const std::string& home) {
    const std::string files = home + "/.local/share/Trash/files";
    if (!std::filesystem::exists(files)) {
        return {};
    }
    for (const auto& entry : std::filesystem::directory_iterator(files)) {
        if (entry.path().filename().string().starts_with("source")) {
            return snapshot(entry.path().string());
        }
    }
    return {};
}

TEST_F(Faults, TrashedPackageIsInPlaceOrInTheTrash) {
    const int reached = fault::runEveryFault({
        .prepare =
            [&] {
                start();
                std::filesystem::create_directory(at("home"));
                makePackage(at("source"));
                m_source = snapshot(at("source"));
                return std::vector<std::string>{"trash", at("."), "source", at("home/.Trash")};
            },
        .check =
            [&](const Outcome& outcome) {
                const std::string source = snapshot(at("source"));
                EXPECT_TRUE(source == m_source || source.empty());
                EXPECT_NE(source, trashed(at("home")));
                EXPECT_TRUE(outcome.killed || source.empty() == (outcome.status == 0));
            },
        .checkSecond =
            [&](const Outcome&, const Outcome&) {
                EXPECT_EQ(snapshot(at("source")), "");
                EXPECT_EQ(trashed(at("home")), m_source);
            },
    });
    EXPECT_GT(reached, 50);
}

TEST_F(Faults, PackageTrashedAcrossFileSystemsIsInPlaceOrInTheTrash) {
    if (!hasTwoFileSystems()) {
        GTEST_SKIP() << "no second file system at /dev/shm";
    }
    const int reached = fault::runEveryFault({
        .prepare =
            [&] {
                startOnTwoFileSystems();
                std::filesystem::create_directory(farAt("home"));
                makePackage(at("source"));
                m_source = snapshot(at("source"));
                return std::vector<std::string>{"trash", at("."), "source", farAt("home/.Trash")};
            },
        .check =
            [&](const Outcome& outcome) {
                const std::string source = snapshot(at("source"));
                EXPECT_TRUE(source == m_source || source.empty());
                EXPECT_TRUE(source == m_source || trashed(farAt("home")) == m_source);
                EXPECT_TRUE(outcome.killed || outcome.status != 0 || source.empty());
            },
        .checkSecond =
            [&](const Outcome&, const Outcome&) {
                EXPECT_EQ(snapshot(at("source")), "");
                EXPECT_EQ(trashed(farAt("home")), m_source);
            },
    });
    EXPECT_GT(reached, 300);
}

TEST_F(Faults, RewrittenFileHasTheOldContentsOrTheNewOnes) {
    const int reached = fault::runEveryFault({
        .prepare =
            [&] {
                start();
                std::ofstream(at("file")) << "old";
                return std::vector<std::string>{"write", at("file"), "new"};
            },
        .check =
            [&](const Outcome& outcome) {
                std::string text;
                std::ifstream(at("file")) >> text;
                EXPECT_TRUE(text == "old" || text == "new") << text;
                if (!outcome.killed) {
                    EXPECT_EQ(text == "new", outcome.status == 0);
                    EXPECT_TRUE(hiddenNames(at(".")).empty());
                }
            },
        .checkSecond =
            [&](const Outcome&, const Outcome&) {
                std::string text;
                std::ifstream(at("file")) >> text;
                EXPECT_EQ(text, "new");
            },
    });
    EXPECT_GE(reached, 15);
}

TEST_F(Faults, RemovalThatFailedIsFinishedByTheNextOne) {
    const int reached = fault::runEveryFault({
        .prepare =
            [&] {
                start();
                makePackage(at("source"));
                writeFile(at("neighbour"), 10);
                EXPECT_EQ(::chmod(at("source/Contents/Closed").c_str(), 0755), 0);
                return std::vector<std::string>{"remove", at("source")};
            },
        .check =
            [&](const Outcome& outcome) {
                EXPECT_NE(snapshot(at("neighbour")), "");
                EXPECT_TRUE(outcome.killed || snapshot(at("source")).empty() == (outcome.status == 0));
            },
        .checkSecond =
            [&](const Outcome&, const Outcome&) {
                EXPECT_EQ(snapshot(at("source")), "");
                EXPECT_NE(snapshot(at("neighbour")), "");
            },
    });
    EXPECT_GT(reached, 30);
}

}  // namespace
