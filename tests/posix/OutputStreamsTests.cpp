#include "platform/posix/OutputStreams.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "platform/posix/Pipe.h"

namespace {

using namespace std::chrono_literals;
using platform::posix::Descriptor;
using platform::posix::makePipe;
using platform::posix::OutputStreams;
using Chunk = platform::Process::Chunk;
using Clock = std::chrono::steady_clock;

class OutputStreamsTest : public testing::Test {
protected:
    OutputStreamsTest() {
        auto outputPipe = makePipe();
        auto errorPipe = makePipe();
        streams.open(std::move(outputPipe->readEnd), std::move(errorPipe->readEnd));
        toOutput = std::move(outputPipe->writeEnd);
        toError = std::move(errorPipe->writeEnd);
    }
    static void put(const Descriptor& end, std::string_view bytes) {
        ASSERT_EQ(::write(end.get(), bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    OutputStreams streams;
    Descriptor toOutput;
    Descriptor toError;
    std::string output = "before ";
    std::string error;
};

TEST_F(OutputStreamsTest, AppendWhatIsThere) {
    put(toOutput, std::string_view("a\0b", 3));
    EXPECT_EQ(streams.read(output, error, 5s), Chunk::output);
    EXPECT_EQ(output, std::string("before a\0b", 10));
}

TEST_F(OutputStreamsTest, TakeTurnsWhenBothHaveSomething) {
    const std::string much(65536, 'x');
    put(toOutput, much);
    put(toError, "e");
    EXPECT_EQ(streams.read(output, error, 5s), Chunk::output);
    put(toOutput, "more");
    EXPECT_EQ(streams.read(output, error, 5s), Chunk::error);
    EXPECT_EQ(streams.read(output, error, 5s), Chunk::output);
}

TEST_F(OutputStreamsTest, EndOnlyWhenBothHaveEnded) {
    toOutput.reset();
    EXPECT_EQ(streams.read(output, error, 10ms), Chunk::timedOut);
    toError.reset();
    EXPECT_EQ(streams.read(output, error, 5s), Chunk::endOfStreams);
}

TEST_F(OutputStreamsTest, GiveWhatWasWrittenBeforeTheEnd) {
    put(toError, "last words");
    toOutput.reset();
    toError.reset();
    EXPECT_EQ(streams.read(output, error, 5s), Chunk::error);
    EXPECT_EQ(error, "last words");
    EXPECT_EQ(streams.read(output, error, 5s), Chunk::endOfStreams);
}

TEST_F(OutputStreamsTest, TimeOutOfNoTimeOnlyLooks) {
    EXPECT_EQ(streams.read(output, error, 0ms), Chunk::timedOut);
    put(toOutput, "x");
    EXPECT_EQ(streams.read(output, error, 0ms), Chunk::output);
}

TEST_F(OutputStreamsTest, ClosingReleasesAThreadThatIsWaiting) {
    std::jthread closer([this] {
        std::this_thread::sleep_for(50ms);
        streams.close();
    });
    const auto start = Clock::now();
    EXPECT_EQ(streams.read(output, error, std::nullopt), Chunk::endOfStreams);
    EXPECT_LT(Clock::now() - start, 5s);
}

TEST_F(OutputStreamsTest, ClosingTellsTheWriter) {
    ::signal(SIGPIPE, SIG_IGN);
    streams.close();
    EXPECT_EQ(::write(toOutput.get(), "x", 1), -1);
    EXPECT_EQ(errno, EPIPE);
    ::signal(SIGPIPE, SIG_DFL);
}

TEST(OutputStreams, WithoutDescriptorsHaveEnded) {
    OutputStreams streams;
    std::string output;
    std::string error;
    EXPECT_EQ(streams.read(output, error, std::nullopt), Chunk::endOfStreams);
}

}  // namespace
