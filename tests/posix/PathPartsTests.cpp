#include "platform/posix/PathParts.h"

#include <gtest/gtest.h>

namespace {

using platform::posix::joinPath;
using platform::posix::splitPath;
using platform::posix::systemPath;

struct Row {
    const char* path;
    const char* folder;
    const char* name;
};

TEST(PathParts, AreTheFolderAndTheItemsNameInIt) {
    const Row rows[] = {{"/a/b", "/a", "b"}, {"/a/b/", "/a", "b"}, {"/a//b", "/a", "b"}, {"/a", "/", "a"},
                        {"//a", "/", "a"},   {"a/b//", "a", "b"},  {"a", ".", "a"},      {"a/", ".", "a"},
                        {"/", "/", ""},      {"///", "/", ""},     {"", ".", ""},        {"./a", ".", "a"},
                        {"..", ".", ".."},   {"a/..", "a", ".."}};
    for (const Row& row : rows) {
        EXPECT_EQ(splitPath(row.path).folder, row.folder) << row.path;
        EXPECT_EQ(splitPath(row.path).name, row.name) << row.path;
    }
}

TEST(PathParts, AreJoinedByOneSlash) {
    EXPECT_EQ(joinPath("/a", "b"), "/a/b");
    EXPECT_EQ(joinPath("/a/", "b"), "/a/b");
    EXPECT_EQ(joinPath("/", "b"), "/b");
}

TEST(PathParts, PathWithANulInItIsNeverHandedToTheSystemCutShort) {
    using namespace std::string_literals;
    EXPECT_STREQ(systemPath("/a\0b"s), "");
    const std::string plain = "/a b";
    EXPECT_STREQ(systemPath(plain), "/a b");
}

}  // namespace
