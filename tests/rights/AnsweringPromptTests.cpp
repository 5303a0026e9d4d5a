#include "tests/rights/AnsweringPrompt.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <atomic>
#include <deque>

namespace {

using platform::rights::PasswordRequest;

// What comes of one question, once the prompt's threads have ended.
struct Outcome {
    bool isAnswered = false;
    bool isCancelled = false;
};

Outcome outcomeWith(std::deque<AnsweringPrompt::Step> steps) {
    std::atomic<int> answers = 0;
    std::atomic<int> cancels = 0;
    {
        AnsweringPrompt prompt(std::move(steps), "alice");
        PasswordRequest request;
        request.problem = PasswordRequest::Problem::lockedOut;
        request.details = "2 attempts";
        prompt.ask(request, [&](const auto& answer) { ++(answer ? answers : cancels); });
    }
    return {.isAnswered = answers == 1, .isCancelled = cancels == 1};
}

TEST(APromptOfATest, AnswersWhatATestExpects) { EXPECT_TRUE(outcomeWith({{.password = "x"}}).isAnswered); }

TEST(APromptOfATest, FailsTheTestAndCancelsWhenAQuestionIsNotExpected) {
    static Outcome outcome;
    EXPECT_NONFATAL_FAILURE(outcome = outcomeWith({}), "problem 3, question \"\", details \"2 attempts\"");
    EXPECT_TRUE(outcome.isCancelled);
}

TEST(APromptOfATest, LeavesAQuestionUnansweredWhereATestMeansIt) {
    const Outcome outcome = outcomeWith({{.isAnswered = false}});
    EXPECT_FALSE(outcome.isAnswered || outcome.isCancelled);
}

}  // namespace
