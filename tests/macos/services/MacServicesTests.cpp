// What the Mac's own services promise beyond the contracts.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "platform/macos/services/MacPropertyLists.h"
#include "platform/macos/services/files/MacFileManager.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

using platform::PropertyValue;

TEST(MacPropertyLists, RefuseAListThatIsNestedWithoutEnd) {
    std::string bytes = "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\">";
    for (int level = 0; level < 600; ++level) {
        bytes += "<array>";
    }
    for (int level = 0; level < 600; ++level) {
        bytes += "</array>";
    }
    const auto read = platform::macos::MacPropertyLists().parse(bytes + "</plist>");
    EXPECT_TRUE(std::holds_alternative<platform::Error>(read));
}

TEST(MacPropertyLists, TellTruthValuesFromNumbers) {
    platform::macos::MacPropertyLists lists;
    const PropertyValue list{platform::PropertyArray{{true}, {std::int64_t{1}}, {1.0}, {false}, {std::int64_t{0}}}};
    const auto read = lists.parse(lists.serialize(list));
    ASSERT_TRUE(std::holds_alternative<PropertyValue>(read));
    const auto& values = *std::get<PropertyValue>(read).as<platform::PropertyArray>();
    EXPECT_NE(values.at(0).as<bool>(), nullptr);
    EXPECT_NE(values.at(1).as<std::int64_t>(), nullptr);
    EXPECT_NE(values.at(3).as<bool>(), nullptr);
}

class MacFiles : public testing::Test {
protected:
    std::string add(const std::string& name) {
        std::ofstream(m_folder / name) << "text";
        return m_folder / name;
    }
    std::size_t entries() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(m_folder.path()), {}));
    }

    fakes::TemporaryFolder m_folder;
    platform::macos::MacFileManager m_files;
};

TEST_F(MacFiles, LeaveNothingBesideACopyThatWasRefused) {
    const std::string source = add("source");
    const std::string taken = add("taken");
    EXPECT_TRUE(m_files.copyItem(source, taken));
    EXPECT_EQ(entries(), 2U);
}

TEST_F(MacFiles, GoToAnotherVolumeByACopy) {
    struct stat here {};
    struct stat there {};
    if (::stat(m_folder.path().c_str(), &here) != 0 || ::stat("/dev/shm", &there) != 0 || here.st_dev == there.st_dev ||
        ::access("/dev/shm", W_OK) != 0) {
        GTEST_SKIP() << "no other file system to move to";
    }
    const fakes::TemporaryFolder other("/dev/shm");
    std::filesystem::create_directory(m_folder / "folder");
    const std::string file = add("folder/file");
    EXPECT_FALSE(m_files.moveItem(m_folder / "folder", other / "folder"));
    EXPECT_EQ(m_files.readFile(other / "folder/file", 100), "text");
    EXPECT_EQ(entries(), 0U);
}

TEST_F(MacFiles, AreNotFoundUnderANameThatHoldsANul) {
    const std::string source = add("source");
    const std::string cut = source + std::string("\0x", 2);
    EXPECT_FALSE(m_files.fileExists(cut));
    EXPECT_EQ(m_files.removeItem(cut)->code, EINVAL);
    EXPECT_TRUE(m_files.fileExists(source));
}

}  // namespace
