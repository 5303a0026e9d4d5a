#include <algorithm>
#include <cerrno>
#include <string>

#include "tests/linux/FilesFixture.h"

namespace {

constexpr const char* finderInfo = "user.com.apple.FinderInfo";

class FinderInformation : public FilesFixture {
protected:
    void SetUp() override {
        write("file", "contents");
        if (!setAttribute("file", finderInfo, std::string(32, '\x5a'))) {
            GTEST_SKIP() << "no extended attributes here";
        }
    }
    platform::linux_host::LinuxFileManager m_files;
};

TEST_F(FinderInformation, HoldsTheLabelInThreeBits) {
    ASSERT_FALSE(m_files.setLabelNumber(at("file"), 6));
    std::string expected(32, '\x5a');
    expected[9] = '\x5c';  // 0x5a without its label, and 6 in its place
    EXPECT_EQ(attribute("file", finderInfo), expected);
    EXPECT_EQ(m_files.labelNumber(at("file")), 6);
}

TEST_F(FinderInformation, GoesWithTheLastThatItSays) {
    ASSERT_TRUE(setAttribute("file", finderInfo, std::string(32, '\0')));
    ASSERT_FALSE(m_files.setLabelNumber(at("file"), 2));
    EXPECT_EQ(attribute("file", finderInfo).value().size(), 32U);
    ASSERT_FALSE(m_files.setLabelNumber(at("file"), 0));
    EXPECT_EQ(attribute("file", finderInfo), std::nullopt);
    EXPECT_FALSE(m_files.setLabelNumber(at("file"), 0));
}

TEST_F(FinderInformation, ThatIsTooShortIsFilledUp) {
    ASSERT_TRUE(setAttribute("file", finderInfo, "abcd"));
    EXPECT_EQ(m_files.labelNumber(at("file")), 0);
    ASSERT_FALSE(m_files.setLabelNumber(at("file"), 1));
    EXPECT_EQ(attribute("file", finderInfo).value().substr(0, 10), std::string("abcd\0\0\0\0\0\x02", 10));
}

TEST_F(FinderInformation, ThatIsTooLongIsLeftAlone) {
    ASSERT_TRUE(setAttribute("file", finderInfo, std::string(33, 'x')));
    EXPECT_EQ(m_files.labelNumber(at("file")), 0);
    EXPECT_TRUE(m_files.setLabelNumber(at("file"), 1));
    EXPECT_EQ(attribute("file", finderInfo), std::string(33, 'x'));
}

TEST_F(FinderInformation, IsKeptByFoldersToo) {
    makeFolder("folder");
    ASSERT_FALSE(m_files.setLabelNumber(at("folder"), 5));
    EXPECT_EQ(m_files.labelNumber(at("folder")), 5);
}

TEST_F(FinderInformation, OfAReadOnlyFileCannotBeChangedByAnOrdinaryUser) {
    if (::geteuid() == 0) {
        GTEST_SKIP() << "the superuser may";
    }
    setMode("file", 0444);
    EXPECT_EQ(m_files.setLabelNumber(at("file"), 1)->code, EACCES);
}

TEST_F(FinderInformation, IsNotLookedForBehindANul) {
    const std::string path = at("file") + std::string("\0x", 2);
    EXPECT_EQ(m_files.labelNumber(path), std::nullopt);
    EXPECT_TRUE(m_files.setLabelNumber(path, 1));
    EXPECT_TRUE(m_files.setExtendedAttribute(path, "key", std::string("x")));
    EXPECT_TRUE(m_files.setModificationDate(path, {}));
}

TEST_F(FinderInformation, ExtendedAttributesArePrefixed) {
    ASSERT_FALSE(m_files.setExtendedAttribute(at("file"), "com.example.key", std::string("x")));
    EXPECT_EQ(attribute("file", "user.com.example.key"), "x");
}

TEST_F(FinderInformation, AccessDateStaysWhenTheModificationDateIsSet) {
    const auto before = status("file").st_atim;
    ASSERT_FALSE(m_files.setModificationDate(at("file"), platform::Date(std::chrono::seconds(1000))));
    EXPECT_EQ(status("file").st_atim.tv_sec, before.tv_sec);
    EXPECT_EQ(status("file").st_atim.tv_nsec, before.tv_nsec);
}

}  // namespace
