#include "platform/linux/rights/PolkitStarter.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <memory>
#include <thread>

#include "platform/linux/rights/PolkitAgent.h"
#include "tests/fakes/TemporaryFolder.h"
#include "tests/rights/AnsweringPrompt.h"

namespace {

using platform::rights::HelperImage;
using platform::rights::PolkitAgent;
using platform::rights::PolkitStarter;
using platform::rights::StartStatus;

// A machine whose system bus is not there, whatever this one has.
class WithoutABus : public testing::Test {
protected:
    void SetUp() override { ::setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + (folder / "none")).c_str(), 1); }
    void TearDown() override { ::unsetenv("DBUS_SYSTEM_BUS_ADDRESS"); }

    fakes::TemporaryFolder folder;
    AnsweringPrompt prompt{{}, "root"};
};

TEST_F(WithoutABus, PolkitIsUnavailableAndNobodyIsAsked) {
    const HelperImage image;
    EXPECT_EQ(PolkitStarter("/bin/true").start(image, &prompt).status, StartStatus::unavailable);
    EXPECT_TRUE(prompt.requests().empty());
}

TEST_F(WithoutABus, NoAgentIsMadeHoweverOftenItIsTried) {
    for (int i = 0; i < 20; ++i) {
        std::thread([&] { EXPECT_EQ(PolkitAgent::make(&prompt), nullptr); }).join();
    }
}

TEST(PolkitStarting, IsUnavailableWithoutPkexec) {
    AnsweringPrompt prompt{{}, "root"};
    const HelperImage image;
    EXPECT_EQ(PolkitStarter("/no/such/pkexec").start(image, &prompt).status, StartStatus::unavailable);
    EXPECT_TRUE(prompt.requests().empty());
}

}  // namespace
