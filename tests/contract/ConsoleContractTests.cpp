#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/services/LinuxConsole.h"
#include "tests/fakes/FakeConsole.h"

namespace {

// What every host's console promises: each text is shown once, by any thread.
std::size_t linesOfTheFake(const std::vector<std::string>& texts) {
    fakes::FakeConsole console;
    {
        std::vector<std::jthread> threads;
        for (const auto& text : texts) {
            threads.emplace_back([&] { console.log(text); });
        }
    }
    return console.lines().size();
}

std::size_t linesOnStandardError(const std::vector<std::string>& texts) {
    testing::internal::CaptureStderr();
    {
        std::vector<std::jthread> threads;
        for (const auto& text : texts) {
            threads.emplace_back([&] { platform::linux_host::LinuxConsole().log(text); });
        }
    }
    const auto shown = testing::internal::GetCapturedStderr();
    return static_cast<std::size_t>(std::ranges::count(shown, '\n'));
}

TEST(ConsoleContract, ShowsOneLineForEachTextOfAnyThread) {
    const std::vector<std::string> texts{"a", "b\nc", "", "d\r\n", "%n"};

    EXPECT_EQ(linesOfTheFake(texts), texts.size());
    EXPECT_EQ(linesOnStandardError(texts), texts.size());
}

}  // namespace
