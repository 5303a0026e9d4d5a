#include "platform/posix/FileErrors.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

namespace {

using platform::posix::fileError;
using platform::posix::meaningOf;
using platform::posix::refusedPath;

TEST(FileErrors, SayWhatCouldNotBeDoneWithWhichItemAndWhy) {
    const platform::Error one = fileError("remove", "/a", EACCES);
    EXPECT_EQ(one.code, EACCES);
    EXPECT_EQ(one.description, "Cannot remove “/a”: Permission denied");
    EXPECT_EQ(fileError("copy", "/a", "/b", ENOSPC).description, "Cannot copy “/a” to “/b”: No space left on device");
}

TEST(FileErrors, NumberThatMeansNothingIsShown) { EXPECT_NE(meaningOf(98765).find("98765"), std::string::npos); }

TEST(FileErrors, PathThatTheSystemWouldCutShortIsRefused) {
    using namespace std::string_literals;
    EXPECT_EQ(refusedPath("write", "")->code, ENOENT);
    const auto refused = refusedPath("write", "/a\0b"s);
    ASSERT_TRUE(refused);
    EXPECT_EQ(refused->code, EINVAL);
    EXPECT_EQ(refused->description, "Cannot write “/a”: Invalid argument");
    EXPECT_FALSE(refusedPath("write", "/a\nb"));
}

}  // namespace
