#include "platform/macos/services/workspace/RecycleRefusal.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/fakes/TemporaryFolder.h"

namespace {

constexpr uid_t somebody = 54321;

class RefusingTheTrash : public testing::Test {
protected:
    RefusingTheTrash() {
        std::filesystem::create_directory(m_folder / "items");
        std::filesystem::create_directory(m_folder / "trash");
        std::ofstream(m_folder / "items/item") << "text";
        ::chmod(m_folder.path().c_str(), 0755);
    }
    ~RefusingTheTrash() override { allow("items", 0755); }

    // As an ordinary user who owns nothing of it, by the superuser; else as whoever runs the test.
    int reason(const std::string& name) const {
        const pid_t child = ::fork();
        if (child == 0) {
            if (::getuid() == 0 && ::setuid(somebody) != 0) {
                ::_exit(255);
            }
            ::_exit(platform::macos::recycleRefusal(m_folder / "items", name, m_folder / "trash"));
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WEXITSTATUS(status);
    }

    void allow(const std::string& name, mode_t mode) const { ::chmod((m_folder / name).c_str(), mode); }

    const fakes::TemporaryFolder m_folder;
};

TEST_F(RefusingTheTrash, OfAMissingItemSaysSo) {
    allow("items", 0777);
    EXPECT_EQ(reason("missing"), ENOENT);
}

TEST_F(RefusingTheTrash, OfAFolderThatMayNotBeChangedSaysSo) {
    allow("items", 0555);
    EXPECT_EQ(reason("item"), EACCES);
}

TEST_F(RefusingTheTrash, OfAFolderWhereEverybodyKeepsTheirOwnSaysSo) {
    if (::getuid() != 0) {
        GTEST_SKIP() << "only the superuser can make something that belongs to others";
    }
    allow("items", 01777);
    EXPECT_EQ(reason("item"), EACCES);
}

TEST_F(RefusingTheTrash, ByATrashThatMayNotBeChangedSaysSo) {
    allow("items", 0777);
    allow("trash", 0555);
    EXPECT_EQ(reason("item"), EACCES);
}

TEST_F(RefusingTheTrash, ByATrashThatIsMissingSaysSo) {
    allow("items", 0777);
    std::filesystem::remove(m_folder / "trash");
    EXPECT_EQ(reason("item"), ENOENT);
}

TEST_F(RefusingTheTrash, WithoutAReasonToBeSeenIsAFailureAllTheSame) {
    allow("items", 0777);
    allow("trash", 0777);
    EXPECT_EQ(reason("item"), EIO);
}

}  // namespace
