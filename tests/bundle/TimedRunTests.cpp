#include "tools/wickfield-bundle/check/TimedRun.h"

#include <gtest/gtest.h>

#include "platform/linux/services/LinuxHost.h"
#include "platform/ports/Host.h"

namespace {

using platform::ProcessOptions;
using std::chrono::milliseconds;
using wickfield_bundle::TimedRun;

class TimedRuns : public testing::Test {
protected:
    static ProcessOptions shell(const std::string& command) {
        return {.path = "/bin/sh",
                .arguments = {"-c", command},
                .environment = std::nullopt,
                .input = ProcessOptions::Input::null,
                .output = ProcessOptions::Output::pipe,
                .error = ProcessOptions::Output::pipe};
    }

    platform::ScopedHost m_scope{platform::linux_host::services()};
};

TEST_F(TimedRuns, GiveOutputErrorAndStatus) {
    const auto result = TimedRun(shell("echo out; echo err >&2; exit 3"), milliseconds{20000}).finish();
    EXPECT_TRUE(result.started);
    EXPECT_FALSE(result.timedOut);
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.output, "out\n");
    EXPECT_EQ(result.error, "err\n");
}

TEST_F(TimedRuns, EndAProgramWhoseTimeIsOver) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_TRUE(TimedRun(shell("sleep 60"), milliseconds{200}).finish().timedOut);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds{20});
}

TEST_F(TimedRuns, EndAProgramThatClosesItsStreamsAndStays) {
    EXPECT_TRUE(TimedRun(shell("exec >&- 2>&-; sleep 60"), milliseconds{500}).finish().timedOut);
}

TEST_F(TimedRuns, EndAProgramThatSaysTooMuch) {
    const auto result = TimedRun(shell("yes"), milliseconds{60000}).finish();
    EXPECT_TRUE(result.timedOut);
    EXPECT_LT(result.output.size(), 4 * TimedRun::mostOutput);
}

TEST_F(TimedRuns, TellAProgramThatASignalEnded) {
    EXPECT_TRUE(TimedRun(shell("kill -SEGV $$"), milliseconds{20000}).finish().endedBySignal);
}

TEST_F(TimedRuns, TellAProgramThatIsMissing) {
    ProcessOptions missing;
    missing.path = "/nowhere/program";
    EXPECT_FALSE(TimedRun(missing, milliseconds{20000}).finish().started);
}

}  // namespace
