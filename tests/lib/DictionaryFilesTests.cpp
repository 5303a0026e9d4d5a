#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "lib/base/PropertyText.h"
#include "platform/linux/services/LinuxHost.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

class DictionaryFiles : public testing::Test {
protected:
    std::string file(const std::string& contents) {
        std::string path = disk / "file.plist";
        std::ofstream(path, std::ios::binary) << contents;
        return path;
    }

    fakes::TemporaryFolder disk;
    platform::ScopedHost host{platform::linux_host::services()};
};

constexpr const char* head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">";

TEST_F(DictionaryFiles, AreReadWhole) {
    const auto read = kz::dictionaryWithContentsOfFile(
        file(std::string(head) + "<dict><key>a</key><string>1</string><key>b</key><true/></dict></plist>"));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->size(), 2U);
    EXPECT_EQ(kz::description(read->at("a")), "1");
    EXPECT_TRUE(kz::boolValue(read->at("b")));
}

TEST_F(DictionaryFiles, AreNoneWhenMissing) {
    EXPECT_FALSE(kz::dictionaryWithContentsOfFile(disk / "missing.plist"));
    EXPECT_FALSE(kz::dictionaryWithContentsOfFile(""));
    EXPECT_FALSE(kz::dictionaryWithContentsOfFile(disk.path()));
}

TEST_F(DictionaryFiles, AreNoneWhenEmptyOrTruncated) {
    EXPECT_FALSE(kz::dictionaryWithContentsOfFile(file("")));
    EXPECT_FALSE(kz::dictionaryWithContentsOfFile(file(std::string(head) + "<dict><key>a</key>")));
    EXPECT_FALSE(kz::dictionaryWithContentsOfFile(file("bplist00\xFF\xFF")));
}

TEST_F(DictionaryFiles, AreNoneWhenTheRootIsAnArray) {
    EXPECT_FALSE(kz::dictionaryWithContentsOfFile(file(std::string(head) + "<array><true/></array></plist>")));
}

TEST_F(DictionaryFiles, AreNoneBeyondTheLimitAndNeverReadThen) {
    const std::string path = file("{");
    std::filesystem::resize_file(path, (256ULL << 20U) + 1);  // sparse
    EXPECT_FALSE(kz::dictionaryWithContentsOfFile(path));
}

}  // namespace
