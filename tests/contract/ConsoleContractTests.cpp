#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "HostUnderTest.h"
#include "tests/fakes/FakeConsole.h"
#include "tests/fakes/JoiningThread.h"

namespace {

constexpr const char* mark = "<>";  // each text begins with it, whatever a host puts in front

// What every host's console promises: each text is shown once, by any thread.
std::size_t linesOfTheFake(const std::vector<std::string>& texts) {
    fakes::FakeConsole console;
    {
        std::vector<fakes::JoiningThread> threads;
        threads.reserve(texts.size());
        for (const auto& text : texts) {
            threads.emplace_back([&] { console.log(text); });
        }
    }
    return console.lines().size();
}

std::size_t textsOnStandardError(const std::vector<std::string>& texts) {
    testing::internal::CaptureStderr();
    {
        std::vector<fakes::JoiningThread> threads;
        threads.reserve(texts.size());
        for (const auto& text : texts) {
            threads.emplace_back([&] { host_under_test::Console().log(text); });
        }
    }
    const auto shown = testing::internal::GetCapturedStderr();
    std::size_t count = 0;
    for (auto place = shown.find(mark); place != std::string::npos; place = shown.find(mark, place + 1)) {
        ++count;
    }
    return count;
}

TEST(ConsoleContract, ShowsEachTextOfAnyThreadOnce) {
    const std::vector<std::string> texts{"<>a", "<>b\nc", "<>", "<>d\r\n", "<>%n"};

    EXPECT_EQ(linesOfTheFake(texts), texts.size());
    EXPECT_EQ(textsOnStandardError(texts), texts.size());
}

}  // namespace
