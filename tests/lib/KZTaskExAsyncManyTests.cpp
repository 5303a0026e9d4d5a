#include <memory>

#include "tests/lib/BackgroundRuns.h"

namespace {

using backgroundruns::BackgroundFixture;
using backgroundruns::Reader;
using fakes::ProcessCensus;
using testing::IsEmpty;

class ManyBackgroundRuns : public BackgroundFixture {};

TEST_F(ManyBackgroundRuns, AtOnceGetEachItsOwnOutputAndLeaveNothingBehind) {
    if (!ProcessCensus::possible()) {
        GTEST_SKIP() << "this system does not show what a process holds";
    }
    const auto before = ProcessCensus::take();
    constexpr std::size_t count = 200;
    std::vector<std::unique_ptr<Reader>> readers;
    {
        std::vector<std::unique_ptr<KZTaskEx>> runners;
        for (std::size_t number = 0; number < count; ++number) {
            readers.push_back(std::make_unique<Reader>());
            runners.push_back(std::make_unique<KZTaskEx>());
            runners.back()->asyncDataFromTask("/bin/echo", {std::to_string(number)}, readers.back().get(),
                                              &Reader::dataArrived, nullptr);
        }
        for (std::size_t number = 0; number < count; ++number) {
            ASSERT_TRUE(readers[number]->reachesTheEnd()) << number;
            EXPECT_EQ(readers[number]->text(), std::to_string(number) + "\n");
        }
    }
    EXPECT_EQ(ProcessCensus::takeUntil(before), before);
}

TEST_F(ManyBackgroundRuns, ThatAreAllCutShortLeaveNothingBehind) {
    if (!ProcessCensus::possible()) {
        GTEST_SKIP() << "this system does not show what a process holds";
    }
    const auto before = ProcessCensus::take();
    Reader reader;
    {
        std::vector<std::unique_ptr<KZTaskEx>> runners;
        for (int number = 0; number < 200; ++number) {
            runners.push_back(std::make_unique<KZTaskEx>());
            runners.back()->asyncDataFromTask("/bin/sleep", {"60"}, &reader, &Reader::dataArrived, nullptr);
        }
    }
    EXPECT_EQ(ProcessCensus::takeUntil(before), before);
    EXPECT_THAT(reader.sizes(), IsEmpty());
}

TEST_F(ManyBackgroundRuns, OneAfterTheOtherOnOneRunnerLeaveNothingBehind) {
    if (!ProcessCensus::possible()) {
        GTEST_SKIP() << "this system does not show what a process holds";
    }
    const auto before = ProcessCensus::take();
    {
        KZTaskEx runner;
        for (int number = 0; number < 100; ++number) {
            Reader reader;
            runner.asyncDataFromTask("/bin/echo", {"text"}, &reader, &Reader::dataArrived, nullptr);
            ASSERT_TRUE(reader.reachesTheEnd());
            runner.terminateTask();  // the reader may be in its last callback still
        }
    }
    EXPECT_EQ(ProcessCensus::takeUntil(before), before);
}

TEST_F(ManyBackgroundRuns, ThatCannotBeStartedLeaveNothingBehind) {
    if (!ProcessCensus::possible()) {
        GTEST_SKIP() << "this system does not show what a process holds";
    }
    const auto file = add("file", "#!/no/such/interpreter\n");
    const auto before = ProcessCensus::take();
    {
        Reader reader;
        KZTaskEx runner;
        for (int number = 0; number < 50; ++number) {
            runner.asyncDataFromTask(number % 2 == 0 ? file : "/no/such/tool", {}, &reader, &Reader::dataArrived,
                                     nullptr);
        }
    }
    EXPECT_EQ(ProcessCensus::takeUntil(before), before);
}

}  // namespace
