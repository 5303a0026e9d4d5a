#include <sys/xattr.h>

#include "tests/tools/ToolsFixture.h"

using ::testing::HasSubstr;

namespace {

class Xattr : public ToolsFixture {
protected:
    void SetUp() override {
        write("file");
        if (::setxattr((place / "file").c_str(), "user.probe", "", 0, 0) != 0) {
            GTEST_SKIP() << "the file system of the temporary folder has no attributes";
        }
    }
    // "none" when it is not there.
    std::string attribute(const std::string& name) const {
        std::string value(5000, '\0');
        const ssize_t size = ::getxattr((place / "file").c_str(), name.c_str(), value.data(), value.size());
        return size < 0 ? "none" : value.substr(0, static_cast<std::size_t>(size));
    }
};

TEST_F(Xattr, WritesAnAttributeOfTheUser) {
    EXPECT_EQ(tool("xattr", {"-w", "com.apple.progress.fractionCompleted", "0.500", "file"}).status, 0);
    EXPECT_EQ(attribute("user.com.apple.progress.fractionCompleted"), "0.500");
}

TEST_F(Xattr, ReplacesAnAttribute) {
    EXPECT_EQ(tool("xattr", {"-w", "name", "a longer value", "file"}).status, 0);
    EXPECT_EQ(tool("xattr", {"-w", "name", "", "file"}).status, 0);
    EXPECT_EQ(attribute("user.name"), "");
}

TEST_F(Xattr, DeletesAnAttribute) {
    EXPECT_EQ(tool("xattr", {"-w", "name", "value", "file"}).status, 0);
    EXPECT_EQ(tool("xattr", {"-d", "name", "file"}).status, 0);
    EXPECT_EQ(attribute("user.name"), "none");
}

TEST_F(Xattr, SaysThatThereIsNoSuchAttribute) {
    const auto outcome = tool("xattr", {"-d", "name", "file"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, "xattr: file: name: there is no such attribute\n");
}

TEST_F(Xattr, SaysWhatFails) {
    EXPECT_THAT(tool("xattr", {"-w", "name", "value", "missing"}).errors, HasSubstr("No such file"));
    EXPECT_EQ(tool("xattr", {"-w", "", "value", "file"}).status, 1);
    EXPECT_EQ(tool("xattr", {"-w", std::string(300, 'n'), "value", "file"}).status, 1);
    EXPECT_EQ(tool("xattr", {"-w", "name", std::string(100'000, 'v'), "file"}).status, 1);
}

TEST_F(Xattr, KnowsNoOtherCommandLines) {
    const std::vector<std::vector<std::string>> wrong{
        {}, {"file"}, {"-w", "name", "value"}, {"-d", "name"}, {"-d", "name", "file", "file"}, {"-l", "file"}};
    for (const auto& arguments : wrong) {
        const auto outcome = tool("xattr", arguments);
        EXPECT_EQ(outcome.status, 64);
        EXPECT_THAT(outcome.errors, HasSubstr("usage: xattr"));
    }
}

}  // namespace
