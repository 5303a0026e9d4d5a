#include "platform/linux/rights/CredentialsPrompt.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace {

using platform::rights::CredentialsPrompt;
using platform::rights::PasswordAnswer;
using platform::rights::PasswordRequest;

struct Outcome {
    bool isAnswered = false;
    std::optional<std::string> user{};  // none: cancelled
    std::string password{};
};

Outcome ask(CredentialsPrompt& prompt, PasswordRequest request) {
    Outcome outcome;
    prompt.ask(std::move(request), [&](std::optional<PasswordAnswer> answer) {
        outcome.isAnswered = true;
        if (answer) {
            outcome.user = answer->user;
            outcome.password = answer->password.view();
        }
    });
    return outcome;
}

PasswordRequest requestFor(const std::string& user) {
    PasswordRequest request;
    request.administrators = {{.user = user, .realName = {}}};
    return request;
}

TEST(KnownCredentials, AnswerTheFirstQuestion) {
    CredentialsPrompt prompt({.user = "bob", .password = "pass word"});
    const auto outcome = ask(prompt, requestFor("bob"));
    EXPECT_EQ(outcome.user, "bob");
    EXPECT_EQ(outcome.password, "pass word");
}

TEST(KnownCredentials, AnswerWhereAnyAccountMayBeNamed) {
    CredentialsPrompt prompt({.user = "bob", .password = "x"});
    auto request = requestFor("alice");
    request.mayNameAnother = true;
    EXPECT_EQ(ask(prompt, request).user, "bob");
}

TEST(KnownCredentials, CancelWhereOnlyOthersMayAnswer) {
    CredentialsPrompt prompt({.user = "bob", .password = "x"});
    const auto outcome = ask(prompt, requestFor("alice"));
    EXPECT_TRUE(outcome.isAnswered);
    EXPECT_FALSE(outcome.user);
}

TEST(KnownCredentials, CancelEverySecondQuestion) {
    CredentialsPrompt prompt({.user = "bob", .password = "x"});
    ask(prompt, requestFor("bob"));
    const auto outcome = ask(prompt, requestFor("bob"));
    EXPECT_TRUE(outcome.isAnswered);
    EXPECT_FALSE(outcome.user);
}

TEST(KnownCredentials, CancelAfterAProblem) {
    CredentialsPrompt prompt({.user = "bob", .password = "x"});
    auto request = requestFor("bob");
    request.problem = PasswordRequest::Problem::wrongPassword;
    EXPECT_FALSE(ask(prompt, request).user);
}

TEST(KnownCredentials, CancelAQuestionForSomethingElseThanThePassword) {
    CredentialsPrompt prompt({.user = "bob", .password = "x"});
    auto request = requestFor("bob");
    request.question = "Verification code:";
    EXPECT_FALSE(ask(prompt, request).user);
}

TEST(KnownCredentials, SayBeforehandWhoseTheyAre) {
    EXPECT_EQ(CredentialsPrompt({.user = "bob", .password = "x"}).knownUser(), "bob");
}

}  // namespace
