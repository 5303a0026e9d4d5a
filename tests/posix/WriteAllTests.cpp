#include "platform/posix/WriteAll.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <string>
#include <thread>

#include "platform/posix/Pipe.h"

namespace {

using platform::posix::writeAll;

TEST(WriteAll, WritesMoreThanAPipeHoldsWhileItIsRead) {
    auto pipe = platform::posix::makePipe();
    ASSERT_TRUE(pipe);
    std::string text(1'000'000, '\0');
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<char>(i % 251);
    }
    std::string received;
    std::thread reader([&] {
        char buffer[4096];
        ssize_t count = 0;
        while ((count = ::read(pipe->readEnd.get(), buffer, sizeof buffer)) > 0) {
            received.append(buffer, static_cast<std::size_t>(count));
        }
    });
    std::string_view left = text;
    EXPECT_EQ(writeAll(pipe->writeEnd.get(), left), 0);
    pipe->writeEnd.reset();
    reader.join();
    EXPECT_TRUE(left.empty());
    EXPECT_EQ(received, text);
}

TEST(WriteAll, LeavesWhatCouldNotBeWritten) {
    const auto pipe = platform::posix::makePipe();
    ASSERT_TRUE(pipe);
    ASSERT_EQ(::fcntl(pipe->writeEnd.get(), F_SETFL, O_NONBLOCK), 0);
    const std::string text(1'000'000, 'x');
    std::string_view left = text;
    EXPECT_EQ(writeAll(pipe->writeEnd.get(), left), EAGAIN);
    EXPECT_GT(left.size(), 0U);
    EXPECT_LT(left.size(), text.size());
}

TEST(WriteAll, NothingIsWrittenWithoutACall) {
    std::string_view left;
    EXPECT_EQ(writeAll(-1, left), 0);
}

}  // namespace
