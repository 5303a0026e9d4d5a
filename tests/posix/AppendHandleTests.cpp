#include "platform/posix/AppendHandle.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <string>

#include "platform/posix/Descriptor.h"
#include "tests/fakes/FolderFixture.h"

namespace {

using platform::posix::openAppendHandle;

class Appending : public FolderFixture {};

TEST_F(Appending, TwoWhoAppendNeverOverwriteEachOther) {
    write("log", "");
    const auto one = openAppendHandle(at("log"));
    const auto two = openAppendHandle(at("log"));
    for (int i = 0; i < 100; ++i) {
        ASSERT_FALSE(one->append("a"));
        ASSERT_FALSE(two->append("bb"));
    }
    EXPECT_EQ(read("log").size(), 300U);
}

TEST_F(Appending, ToAFolderIsNone) {
    makeFolder("folder");
    EXPECT_EQ(openAppendHandle(at("folder")), nullptr);
}

// A reader that does not read would hold the writer up for ever.
TEST_F(Appending, ToAPipeIsNoneWhetherOrNotSomebodyReads) {
    ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
    EXPECT_EQ(openAppendHandle(at("pipe")), nullptr);
    const platform::posix::Descriptor reader(::open(at("pipe").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    EXPECT_EQ(openAppendHandle(at("pipe")), nullptr);
}

TEST_F(Appending, ToADeviceIsNone) { EXPECT_EQ(openAppendHandle("/dev/null"), nullptr); }

TEST_F(Appending, ToALinkGoesToItsFile) {
    write("log", "one ");
    link("link", "log");
    const auto handle = openAppendHandle(at("link"));
    ASSERT_NE(handle, nullptr);
    EXPECT_FALSE(handle->append("two"));
    EXPECT_EQ(read("log"), "one two");
}

TEST_F(Appending, ToNothingMakesNoFile) {
    EXPECT_EQ(openAppendHandle(at("missing")), nullptr);
    EXPECT_FALSE(isThere("missing"));
}

TEST_F(Appending, PieceThatWasCutShortIsEndedByALineBreak) {
    write("log", "");
    const auto handle = openAppendHandle(at("log"));
    ASSERT_NE(handle, nullptr);
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto usual = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = before;
    small.rlim_cur = 5;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const auto failed = handle->append("first line\n");
    ::setrlimit(RLIMIT_FSIZE, &before);
    (void)std::signal(SIGXFSZ, usual);
    ASSERT_TRUE(failed);
    EXPECT_EQ(failed->code, EFBIG);
    EXPECT_FALSE(handle->append("second\n"));
    EXPECT_FALSE(handle->append("third\n"));
    EXPECT_EQ(read("log"), "first\nsecond\nthird\n");
}

}  // namespace
