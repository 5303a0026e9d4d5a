#include "platform/linux/rights/PolkitConversation.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using platform::rights::PasswordAnswer;
using platform::rights::PasswordPrompt;
using platform::rights::PasswordRequest;
using platform::rights::PolkitConversation;
using platform::rights::Secret;
using Problem = PasswordRequest::Problem;
using Verdict = PolkitConversation::Verdict;

class HeldPrompt : public PasswordPrompt {
public:
    void ask(PasswordRequest request, Answered answered) override {
        requests.push_back(std::move(request));
        answers.push_back(std::move(answered));
        isOpen = true;
    }
    void close() override { isOpen = false; }
    std::optional<std::string> knownUser() const override { return known; }

    std::vector<PasswordRequest> requests;
    std::vector<Answered> answers;
    std::optional<std::string> known;
    bool isOpen = false;
};

class RecordedCheck : public PolkitConversation::Check {
public:
    void begin(const std::string& user) override { done.push_back("begin " + user); }
    void respond(const Secret& response) override { done.push_back("respond " + std::string(response.view())); }
    void abandon() override { done.emplace_back("abandon"); }

    std::vector<std::string> done;
};

class Conversation : public testing::Test {
protected:
    void SetUp() override { conversation.begin(); }

    void answer(const std::string& password, const std::string& user = "ann") {
        prompt.answers.back()(PasswordAnswer{.user = user, .password = Secret(password)});
        conversation.takeAnswer();
    }
    void cancel() {
        prompt.answers.back()(std::nullopt);
        conversation.takeAnswer();
    }
    void failWith(const std::string& password) {
        answer(password);
        conversation.asked("Password: ", false);
        conversation.ended(false);
    }
    const PasswordRequest& last() const { return prompt.requests.back(); }

    HeldPrompt prompt;
    RecordedCheck check;
    std::atomic<int> wakes = 0;
    PolkitConversation conversation{
        prompt, check, {{.user = "ann", .realName = "Ann Ash"}, {.user = "ben", .realName = ""}}, [this] { ++wakes; }};
};

TEST_F(Conversation, BeginsWithTheAdministratorsAndTheFirstOfThemChosen) {
    ASSERT_EQ(last().administrators.size(), 2U);
    EXPECT_EQ(last().administrators.front().realName, "Ann Ash");
    EXPECT_EQ(last().user, "ann");
    EXPECT_FALSE(last().mayNameAnother);
    EXPECT_EQ(last().problem, Problem::none);
    EXPECT_EQ(last().question, "");
}

TEST_F(Conversation, GivesThePasswordOnceTheMachineAsksForIt) {
    answer("sesame");
    EXPECT_EQ(check.done, std::vector<std::string>{"begin ann"});
    conversation.asked("Password: ", false);
    EXPECT_EQ(check.done.back(), "respond sesame");
}

TEST_F(Conversation, ChecksTheAccountThatWasChosen) {
    answer("sesame", "ben");
    EXPECT_EQ(check.done, std::vector<std::string>{"begin ben"});
}

TEST_F(Conversation, LeavesTheQuestionUpWhenRightsAreGranted) {
    answer("sesame");
    conversation.asked("Password: ", false);
    conversation.ended(true);
    EXPECT_EQ(conversation.verdict(), Verdict::granted);
    EXPECT_TRUE(prompt.isOpen);
}

TEST_F(Conversation, GrantsWithoutTheMachineAskingAnything) {
    answer("");
    conversation.ended(true);
    EXPECT_EQ(conversation.verdict(), Verdict::granted);
}

TEST_F(Conversation, AsksAgainAfterAWrongPasswordForTheAccountThatWasChosen) {
    answer("wrong", "ben");
    conversation.asked("Password: ", false);
    conversation.ended(false);
    EXPECT_EQ(last().problem, Problem::wrongPassword);
    EXPECT_EQ(last().user, "ben");
    EXPECT_EQ(last().administrators.size(), 2U);
    EXPECT_EQ(conversation.verdict(), Verdict::open);
}

TEST_F(Conversation, LocksOutAfterThreeWrongPasswordsAndIsRefusedOnceThatIsRead) {
    failWith("one");
    failWith("two");
    failWith("three");
    EXPECT_EQ(last().problem, Problem::lockedOut);
    EXPECT_EQ(conversation.verdict(), Verdict::open);
    cancel();
    EXPECT_EQ(conversation.verdict(), Verdict::refused);
    EXPECT_FALSE(prompt.isOpen);
}

TEST_F(Conversation, ChecksNothingMoreOnceLockedOut) {
    failWith("one");
    failWith("two");
    failWith("three");
    const auto before = check.done.size();
    answer("four");
    EXPECT_EQ(check.done.size(), before + 1);
    EXPECT_EQ(check.done.back(), "abandon");
    EXPECT_EQ(conversation.verdict(), Verdict::refused);
}

TEST_F(Conversation, IsCancelledBeforeAnAnswer) {
    cancel();
    EXPECT_EQ(conversation.verdict(), Verdict::cancelled);
    EXPECT_FALSE(prompt.isOpen);
}

TEST_F(Conversation, IsCancelledWhileTheAnswerIsBeingChecked) {
    answer("sesame");
    conversation.asked("Password: ", false);
    cancel();
    EXPECT_EQ(conversation.verdict(), Verdict::cancelled);
    EXPECT_EQ(check.done.back(), "abandon");
}

TEST_F(Conversation, StaysCancelledWhateverTheMachineSaysAfterwards) {
    answer("sesame");
    conversation.asked("Password: ", false);
    cancel();
    conversation.ended(true);
    EXPECT_EQ(conversation.verdict(), Verdict::cancelled);
}

TEST_F(Conversation, AsksWhatTheMachineAsksBeyondThePassword) {
    answer("sesame");
    conversation.asked("Password: ", false);
    conversation.asked(" Verification code: ", true);
    EXPECT_EQ(last().question, "Verification code:");
    EXPECT_TRUE(last().isEchoed);
    ASSERT_EQ(last().administrators.size(), 1U);
    EXPECT_EQ(last().administrators.front().user, "ann");
    answer("123456");
    EXPECT_EQ(check.done.back(), "respond 123456");
}

TEST_F(Conversation, KeepsThePasswordForWhenTheMachineAsksSomethingElseFirst) {
    answer("sesame");
    conversation.asked("PIN: ", false);
    EXPECT_EQ(last().question, "PIN:");
    answer("1234");
    conversation.asked("LDAP password: ", false);
    EXPECT_EQ(check.done.back(), "respond sesame");
}

TEST_F(Conversation, AsksForASecondPasswordInsteadOfGivingTheFirstTwice) {
    answer("sesame");
    conversation.asked("Password: ", false);
    conversation.asked("Password: ", false);
    EXPECT_EQ(last().question, "Password:");
    EXPECT_EQ(check.done.back(), "respond sesame");
}

TEST_F(Conversation, ShowsNoPasswordToAQuestionThatIsEchoed) {
    answer("sesame");
    conversation.asked("Password: ", true);
    EXPECT_EQ(check.done.back(), "begin ann");
    EXPECT_TRUE(last().isEchoed);
}

TEST_F(Conversation, PassesOnWhatTheMachineSaysWithTheNextQuestion) {
    answer("sesame");
    conversation.said("Your password expires tomorrow.\n");
    conversation.asked("Password: ", false);
    conversation.said("Try harder.");
    conversation.ended(false);
    EXPECT_EQ(last().details, "Your password expires tomorrow.\nTry harder.");
    failWith("again");
    EXPECT_EQ(last().details, "");
}

TEST_F(Conversation, IsLockedOutWhenTheMachineSaysWhyItAsksNothing) {
    answer("sesame");
    conversation.said("The account is locked due to 3 failed logins.");
    conversation.ended(false);
    EXPECT_EQ(last().problem, Problem::lockedOut);
    EXPECT_EQ(last().details, "The account is locked due to 3 failed logins.");
}

TEST_F(Conversation, IsUnavailableWhenNoAnswerWasChecked) {
    answer("sesame");
    conversation.ended(false);
    EXPECT_EQ(conversation.verdict(), Verdict::unavailable);
    EXPECT_FALSE(prompt.isOpen);
}

TEST_F(Conversation, TakesAnAccountThatIsNotOnTheListForNoAdministrator) {
    answer("sesame", "mallory");
    EXPECT_EQ(last().problem, Problem::notAdministrator);
    EXPECT_TRUE(check.done.empty());
}

TEST_F(Conversation, TakesAPasswordOfSeveralLinesForAWrongOne) {
    answer("sesame\nanother answer");
    EXPECT_EQ(last().problem, Problem::wrongPassword);
    EXPECT_TRUE(check.done.empty());
}

TEST_F(Conversation, TakesAPasswordWithANulForAWrongOne) {
    answer(std::string("ses\0ame", 7));
    EXPECT_EQ(last().problem, Problem::wrongPassword);
    EXPECT_TRUE(check.done.empty());
}

TEST_F(Conversation, EndsTheCheckOnAnAnswerOfSeveralLines) {
    answer("sesame");
    conversation.asked("Code: ", true);
    answer("1\n2");
    EXPECT_EQ(check.done.back(), "abandon");
    EXPECT_EQ(last().problem, Problem::wrongPassword);
}

TEST_F(Conversation, IgnoresAnAnswerToAnEarlierQuestion) {
    failWith("wrong");
    const auto before = check.done;
    prompt.answers.front()(PasswordAnswer{.user = "ann", .password = Secret("late")});
    conversation.takeAnswer();
    EXPECT_EQ(check.done, before);
    EXPECT_EQ(wakes, 1);
}

TEST_F(Conversation, IgnoresASecondAnswerToOneQuestion) {
    answer("sesame");
    answer("again");
    EXPECT_EQ(check.done, std::vector<std::string>{"begin ann"});
}

TEST_F(Conversation, IsWokenByAnAnswerFromAnotherThread) {
    std::thread([this] { prompt.answers.back()(PasswordAnswer{.user = "ann", .password = Secret("sesame")}); }).join();
    EXPECT_EQ(wakes, 1);
    conversation.takeAnswer();
    EXPECT_EQ(check.done, std::vector<std::string>{"begin ann"});
}

TEST(Conversations, AreUnavailableWithoutAnyAdministrator) {
    HeldPrompt prompt;
    RecordedCheck check;
    PolkitConversation conversation(prompt, check, {}, [] {});
    conversation.begin();
    EXPECT_EQ(conversation.verdict(), Verdict::unavailable);
    EXPECT_TRUE(prompt.requests.empty());
}

TEST(Conversations, AreUnavailableForAKnownUserWhoIsNoAdministrator) {
    HeldPrompt prompt;
    prompt.known = "mallory";
    RecordedCheck check;
    PolkitConversation conversation(prompt, check, {{.user = "ann", .realName = ""}}, [] {});
    conversation.begin();
    EXPECT_EQ(conversation.verdict(), Verdict::unavailable);
    EXPECT_TRUE(prompt.requests.empty());
}

TEST(Conversations, TakeTheQuestionOffTheScreenAndIgnoreAnswersAfterTheirEnd) {
    HeldPrompt prompt;
    RecordedCheck check;
    int wakes = 0;
    {
        PolkitConversation conversation(prompt, check, {{.user = "ann", .realName = ""}}, [&] { ++wakes; });
        conversation.begin();
    }
    EXPECT_FALSE(prompt.isOpen);
    prompt.answers.back()(std::nullopt);
    EXPECT_EQ(wakes, 0);
}

}  // namespace
