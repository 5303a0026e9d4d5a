#include "platform/linux/rights/PromptDialogue.h"

#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <utility>

#include "tests/rights/AnsweringPrompt.h"

namespace {

using platform::rights::PasswordAnswer;
using platform::rights::PasswordPrompt;
using platform::rights::PasswordRequest;
using platform::rights::PromptDialogue;
using platform::rights::Secret;

PasswordRequest request() {
    PasswordRequest made;
    made.administrators = {{.user = "bob", .realName = {}}};
    return made;
}

PasswordAnswer answerOf(const char* password) { return {.user = "bob", .password = Secret(password)}; }

// Hands what answers the last question to the test.
class HeldPrompt : public PasswordPrompt {
public:
    void ask(PasswordRequest /*asked*/, Answered answered) override { last = std::move(answered); }
    void close() override { isClosed = true; }

    Answered last;
    bool isClosed = false;
};

TEST(Dialogue, WaitsForTheAnswer) {
    AnsweringPrompt prompt({{.password = "secret", .after = std::chrono::milliseconds{50}}}, "bob");
    PromptDialogue dialogue(prompt);
    dialogue.ask(request());
    const auto answer = dialogue.waitForAnswer();
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->password.view(), "secret");
}

TEST(Dialogue, EndsItsWaitWhenCancelled) {
    AnsweringPrompt prompt({{.after = std::chrono::milliseconds{50}}}, "bob");
    PromptDialogue dialogue(prompt);
    dialogue.ask(request());
    EXPECT_FALSE(dialogue.waitForAnswer());
    EXPECT_TRUE(dialogue.isCancelled());
}

TEST(Dialogue, HearsACancelAfterTheAnswer) {
    HeldPrompt prompt;
    PromptDialogue dialogue(prompt);
    dialogue.ask(request());
    prompt.last(answerOf("x"));
    ASSERT_TRUE(dialogue.takeAnswer());
    prompt.last(std::nullopt);
    EXPECT_TRUE(dialogue.isCancelled());
}

TEST(Dialogue, AsksNothingMoreOnceCancelled) {
    HeldPrompt prompt;
    PromptDialogue dialogue(prompt);
    dialogue.ask(request());
    prompt.last(std::nullopt);
    prompt.last = nullptr;
    dialogue.ask(request());
    EXPECT_FALSE(prompt.last);
    EXPECT_FALSE(dialogue.waitForAnswer());
}

TEST(Dialogue, IgnoresALateAnswerToTheQuestionBefore) {
    HeldPrompt prompt;
    PromptDialogue dialogue(prompt);
    dialogue.ask(request());
    const auto first = std::exchange(prompt.last, nullptr);
    dialogue.ask(request());
    first(answerOf("late"));
    EXPECT_FALSE(dialogue.takeAnswer());
    first(std::nullopt);
    EXPECT_FALSE(dialogue.isCancelled());
}

TEST(Dialogue, ForgetsAnAnswerWhenItAsksAgain) {
    HeldPrompt prompt;
    PromptDialogue dialogue(prompt);
    dialogue.ask(request());
    prompt.last(answerOf("first"));
    dialogue.ask(request());
    EXPECT_FALSE(dialogue.takeAnswer());
}

TEST(Dialogue, ClosesThePromptAndOutlivesLateAnswers) {
    HeldPrompt prompt;
    {
        PromptDialogue dialogue(prompt);
        dialogue.ask(request());
    }
    EXPECT_TRUE(prompt.isClosed);
    prompt.last(answerOf("late"));
}

}  // namespace
