// What every file manager promises of extended attributes, labels and dates.
#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <limits>
#include <string>

#include "HostUnderTest.h"
#include "tests/fakes/FakeFileManager.h"
#include "tests/fakes/TemporaryFolder.h"

namespace {

using namespace std::chrono_literals;

class RealFiles {
public:
    static constexpr int missingAttribute = host_under_test::missingAttribute;
    platform::FileManager& files() { return m_files; }
    std::string at(const std::string& name) { return m_folder / name; }
    void link(const std::string& name, const std::string& target) { std::filesystem::create_symlink(target, at(name)); }

private:
    fakes::TemporaryFolder m_folder;
    host_under_test::FileManager m_files;
};

class FilesInMemory {
public:
    static constexpr int missingAttribute = ENODATA;
    FilesInMemory() { m_files.addFolder("/root"); }
    platform::FileManager& files() { return m_files; }
    std::string at(const std::string& name) { return "/root/" + name; }
    void link(const std::string& name, const std::string& target) { m_files.addLink(at(name), target); }

private:
    fakes::FakeFileManager m_files;
};

template <typename Kind>
class FileMetadataContract : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_FALSE(files().writeAtomically(file, "contents"));
        if (set("probe", "")) {
            GTEST_SKIP() << "no extended attributes here";
        }
    }
    platform::FileManager& files() { return m_kind.files(); }
    std::string at(const std::string& name) { return m_kind.at(name); }
    void link(const std::string& name, const std::string& target) { m_kind.link(name, target); }
    platform::Failure set(const std::string& name, const std::string& value) {
        return files().setExtendedAttribute(file, name, value);
    }
    // The value, or "error N".
    std::string get(const std::string& path, const std::string& name, std::size_t room) {
        std::string value(room, '?');
        const auto size = files().readExtendedAttribute(path, name, value);
        if (const auto* error = std::get_if<platform::Error>(&size)) {
            return "error " + std::to_string(error->code);
        }
        return value.substr(0, std::get<std::size_t>(size));
    }

private:
    Kind m_kind;

protected:
    const std::string file = m_kind.at("file");
};

using Kinds = testing::Types<RealFiles, FilesInMemory>;
TYPED_TEST_SUITE(FileMetadataContract, Kinds);

TYPED_TEST(FileMetadataContract, AttributeIsReadAsItWasSet) {
    const std::string value("a\0b\xff", 4);
    ASSERT_FALSE(this->set("com.example.key", value));
    EXPECT_EQ(this->get(this->file, "com.example.key", 4), value);
    EXPECT_EQ(this->get(this->file, "com.example.key", 255), value);
}

TYPED_TEST(FileMetadataContract, AttributeIsMeasuredWithoutRoom) {
    ASSERT_FALSE(this->set("com.example.key", "12345"));
    const auto size = this->files().readExtendedAttribute(this->file, "com.example.key", {});
    EXPECT_EQ(std::get<std::size_t>(size), 5U);
}

TYPED_TEST(FileMetadataContract, AttributeWantsRoomForAllOfIt) {
    ASSERT_FALSE(this->set("com.example.key", "12345"));
    EXPECT_EQ(this->get(this->file, "com.example.key", 4), "error " + std::to_string(ERANGE));
}

TYPED_TEST(FileMetadataContract, AttributeThatIsAbsentIsAnError) {
    EXPECT_EQ(this->get(this->file, "com.example.key", 9), "error " + std::to_string(TypeParam::missingAttribute));
    EXPECT_EQ(this->get(this->at("missing"), "com.example.key", 9), "error " + std::to_string(ENOENT));
}

TYPED_TEST(FileMetadataContract, AttributeWithAnImpossibleNameIsRefused) {
    EXPECT_TRUE(this->set("", "x"));
    EXPECT_TRUE(this->set(std::string("a\0b", 3), "x"));
    EXPECT_EQ(this->get(this->file, "a", 9), "error " + std::to_string(TypeParam::missingAttribute));
}

TYPED_TEST(FileMetadataContract, AttributeOfALinkIsThatOfItsTarget) {
    this->link("link", "file");
    ASSERT_FALSE(this->files().setExtendedAttribute(this->at("link"), "com.example.key", std::string("x")));
    EXPECT_EQ(this->get(this->file, "com.example.key", 9), "x");
    EXPECT_EQ(this->get(this->at("link"), "com.example.key", 9), "x");
}

TYPED_TEST(FileMetadataContract, LabelIsTheOneThatWasSet) {
    EXPECT_EQ(this->files().labelNumber(this->file), 0);
    for (const int number : {1, 7, 4, 0}) {
        ASSERT_FALSE(this->files().setLabelNumber(this->file, number));
        EXPECT_EQ(this->files().labelNumber(this->file), number);
    }
}

TYPED_TEST(FileMetadataContract, LabelIsNoOtherNumber) {
    ASSERT_FALSE(this->files().setLabelNumber(this->file, 3));
    for (const long number : {-1L, 8L, 256L + 1, std::numeric_limits<long>::max()}) {
        EXPECT_TRUE(this->files().setLabelNumber(this->file, number)) << number;
    }
    EXPECT_EQ(this->files().labelNumber(this->file), 3);
}

TYPED_TEST(FileMetadataContract, LabelOfALinkIsItsOwn) {
    ASSERT_FALSE(this->files().setLabelNumber(this->file, 3));
    this->link("link", "file");
    EXPECT_EQ(this->files().labelNumber(this->at("link")), 0);
    const bool refused = this->files().setLabelNumber(this->at("link"), 5).has_value();  // links may have none
    EXPECT_EQ(this->files().labelNumber(this->at("link")), refused ? 0 : 5);
    EXPECT_EQ(this->files().labelNumber(this->file), 3);
}

TYPED_TEST(FileMetadataContract, LabelOfNothingIsNone) {
    EXPECT_EQ(this->files().labelNumber(this->at("missing")), std::nullopt);
    EXPECT_TRUE(this->files().setLabelNumber(this->at("missing"), 1));
}

TYPED_TEST(FileMetadataContract, ModificationDateIsTheOneThatWasSet) {
    for (const platform::Date date : {platform::Date(1'000'000s + 5us), platform::Date(-1'000'000s + 5us)}) {
        ASSERT_FALSE(this->files().setModificationDate(this->file, date));
        EXPECT_EQ(this->files().attributes(this->file)->modificationDate, date);
    }
}

TYPED_TEST(FileMetadataContract, ModificationDateOfALinkIsSetOnItsTarget) {
    this->link("link", "file");
    ASSERT_FALSE(this->files().setModificationDate(this->at("link"), platform::Date(1'000s)));
    EXPECT_EQ(this->files().attributes(this->file)->modificationDate, platform::Date(1'000s));
    EXPECT_TRUE(this->files().setModificationDate(this->at("missing"), platform::Date()));
}

}  // namespace
