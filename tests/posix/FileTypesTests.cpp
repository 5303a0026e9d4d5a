#include "platform/posix/FileTypes.h"

#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace {

using platform::FileType;
using platform::posix::isDotOrDotDot;
using platform::posix::typeOfEntry;
using platform::posix::typeOfMode;

TEST(FileTypes, AreToldByTheMode) {
    EXPECT_EQ(typeOfMode(S_IFREG | 0644), FileType::regular);
    EXPECT_EQ(typeOfMode(S_IFDIR | 01777), FileType::folder);
    EXPECT_EQ(typeOfMode(S_IFLNK | 0777), FileType::symbolicLink);
    EXPECT_EQ(typeOfMode(S_IFIFO | 0600), FileType::other);
}

TEST(FileTypes, AreToldByTheEntryWhereTheFileSystemKnowsThem) {
    EXPECT_EQ(typeOfEntry(DT_REG), FileType::regular);
    EXPECT_EQ(typeOfEntry(DT_DIR), FileType::folder);
    EXPECT_EQ(typeOfEntry(DT_LNK), FileType::symbolicLink);
    EXPECT_EQ(typeOfEntry(DT_SOCK), FileType::other);
    EXPECT_EQ(typeOfEntry(DT_UNKNOWN), FileType::unknown);
}

TEST(FileTypes, HiddenNamesAreNotTheFolderItself) {
    EXPECT_TRUE(isDotOrDotDot("."));
    EXPECT_TRUE(isDotOrDotDot(".."));
    EXPECT_FALSE(isDotOrDotDot("..."));
    EXPECT_FALSE(isDotOrDotDot(".a"));
    EXPECT_FALSE(isDotOrDotDot("a"));
}

}  // namespace
