// Visiting a folder: the host's own way, and the one by way of the other operations, say the same.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <tuple>

#include "HostUnderTest.h"
#include "tests/fakes/FailingFileManager.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

using platform::FileType;
using platform::VisitSizes;
using ::testing::UnorderedElementsAre;

using Entry = std::tuple<std::string, FileType, std::uint64_t>;

class VisitingAFolder : public ::testing::TestWithParam<const char*> {
protected:
    platform::FileManager& files() {
        return std::string(GetParam()) == "HostsOwnWay" ? static_cast<platform::FileManager&>(m_own) : m_byOthers;
    }
    std::vector<Entry> visited(const std::string& path, VisitSizes sizes) {
        std::vector<Entry> entries;
        EXPECT_TRUE(files().visitDirectory(path, sizes, [&](const platform::VisitedEntry& entry) {
            entries.emplace_back(entry.name, entry.type, entry.size);
        }));
        return entries;
    }
    void add(const std::string& name, const std::string& contents) { std::ofstream(disk / name) << contents; }

    fakes::TemporaryFolder disk;

private:
    host_under_test::FileManager m_own;
    fakes::FailingFileManager m_byOthers{m_own};
};

TEST_P(VisitingAFolder, TellsNamesTypesAndSizes) {
    add("file", "12345");
    add(host_under_test::strangeName, "1");
    std::filesystem::create_directory(disk / "folder");
    std::filesystem::create_symlink("file", disk / "link");
    EXPECT_THAT(visited(disk.path(), VisitSizes::yes),
                UnorderedElementsAre(Entry("file", FileType::regular, 5),
                                     Entry(host_under_test::strangeName, FileType::regular, 1),
                                     Entry("folder", FileType::folder, 0), Entry("link", FileType::symbolicLink, 4)));
}

TEST_P(VisitingAFolder, TellsNoSizesUnlessAskedFor) {
    add("file", "12345");
    // A listing need not tell of what type an item is.
    const bool own = std::string(GetParam()) == "HostsOwnWay";
    const FileType type = own ? FileType::regular : files().contentsOfDirectory(disk.path())->front().type;
    EXPECT_THAT(visited(disk.path(), VisitSizes::no), UnorderedElementsAre(Entry("file", type, 0)));
}

TEST_P(VisitingAFolder, KeepsTheOrderOfTheListing) {
    for (int number = 0; number < 2000; ++number) {
        add("a name of some length " + std::to_string(number), "");
    }
    std::vector<std::string> listed;
    const auto entries = files().contentsOfDirectory(disk.path());
    ASSERT_TRUE(entries);
    std::ranges::transform(*entries, std::back_inserter(listed), &platform::DirectoryEntry::name);
    std::vector<std::string> names;
    for (const auto& entry : visited(disk.path(), VisitSizes::no)) {
        names.push_back(std::get<0>(entry));
    }
    EXPECT_EQ(names.size(), 2000U);
    EXPECT_EQ(names, listed);
}

TEST_P(VisitingAFolder, IsRefusedForAFileAndForNothing) {
    add("file", "");
    const auto nobody = [](const platform::VisitedEntry&) { FAIL() << "an entry of no folder"; };
    EXPECT_FALSE(files().visitDirectory(disk / "file", VisitSizes::yes, nobody));
    EXPECT_FALSE(files().visitDirectory(disk / "gone", VisitSizes::yes, nobody));
}

TEST_P(VisitingAFolder, MayBeDoneWithinAVisit) {
    std::filesystem::create_directory(disk / "folder");
    add("folder/file", "12345");
    std::uint64_t bytes = 0;
    EXPECT_TRUE(files().visitDirectory(disk.path(), VisitSizes::yes, [&](const platform::VisitedEntry& outer) {
        files().visitDirectory(disk / std::string(outer.name), VisitSizes::yes,
                               [&](const platform::VisitedEntry& inner) { bytes += inner.size; });
    }));
    EXPECT_EQ(bytes, 5U);
}

INSTANTIATE_TEST_SUITE_P(Ways, VisitingAFolder, ::testing::Values("HostsOwnWay", "ByOtherOperations"),
                         [](const auto& way) { return std::string(way.param); });

}  // namespace
