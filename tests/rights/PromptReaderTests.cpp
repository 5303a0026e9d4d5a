#include "platform/linux/rights/PromptReader.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace {

using platform::rights::PromptReader;
using Lines = std::vector<std::string>;

constexpr std::string_view bobs = "@@wickfield-rights:bob@@";

PromptReader readerOf(std::string_view text) {
    PromptReader reader;
    reader.append(text);
    return reader;
}

TEST(ReadingPrompts, SaysWhosePasswordIsWanted) {
    const auto question = readerOf(bobs).next();
    ASSERT_TRUE(question);
    EXPECT_EQ(question->user, "bob");
    EXPECT_EQ(question->text, "");
}

TEST(ReadingPrompts, KnowsNamesWithAnAtSign) {
    const auto question = readerOf("@@wickfield-rights:bob@corp.example@@").next();
    ASSERT_TRUE(question);
    EXPECT_EQ(question->user, "bob@corp.example");
}

TEST(ReadingPrompts, TakesAPromptInAnyPieces) {
    PromptReader reader;
    for (const char c : bobs.substr(0, bobs.size() - 1)) {
        reader.append({&c, 1});
        ASSERT_FALSE(reader.next());
    }
    reader.append("@");
    EXPECT_TRUE(reader.next());
}

TEST(ReadingPrompts, FindsTheOneAfterTheOther) {
    auto reader = readerOf(std::string(bobs) + "Sorry, try again.\n" + std::string(bobs));
    ASSERT_TRUE(reader.next());
    const auto second = reader.next();
    ASSERT_TRUE(second);
    EXPECT_EQ(second->said, Lines{"Sorry, try again."});
    EXPECT_FALSE(reader.next());
}

TEST(ReadingPrompts, BringsWhatWasSaidBeforeWithoutBlankLines) {
    const auto question = readerOf("\nThe account is locked.\n\n  Wait. \r\n" + std::string(bobs)).next();
    ASSERT_TRUE(question);
    EXPECT_EQ(question->said, (Lines{"The account is locked.", "Wait."}));
}

TEST(ReadingPrompts, KnowsThePromptOfSu) {
    const auto question = readerOf("Password: ").next();
    ASSERT_TRUE(question);
    EXPECT_EQ(question->user, "");
    EXPECT_EQ(question->text, "");
}

TEST(ReadingPrompts, TakesNoSentenceAboutAPasswordForAPrompt) {
    EXPECT_FALSE(readerOf("Password: expires today\n").next());
    EXPECT_FALSE(readerOf("Current Password: ").next());
}

TEST(ReadingPrompts, TakesAnUnfinishedLineForAQuestion) {
    auto reader = readerOf("Welcome\nVerification code: ");
    ASSERT_TRUE(reader.endsUnfinished());
    const auto question = reader.unfinishedLine();
    ASSERT_TRUE(question);
    EXPECT_EQ(question->text, "Verification code:");
    EXPECT_EQ(question->said, Lines{"Welcome"});
    EXPECT_FALSE(reader.endsUnfinished());
}

TEST(ReadingPrompts, TakesAPasswordPromptWithoutABlankForOne) {
    const auto question = readerOf("Password:").unfinishedLine();
    ASSERT_TRUE(question);
    EXPECT_EQ(question->text, "");
}

TEST(ReadingPrompts, TakesNoFinishedLineForAQuestion) {
    EXPECT_FALSE(readerOf("Place your finger on the reader\n").endsUnfinished());
    EXPECT_FALSE(readerOf("").endsUnfinished());
    EXPECT_FALSE(readerOf("line\n  ").unfinishedLine());
}

TEST(ReadingPrompts, KeepsTheLastWords) {
    EXPECT_EQ(readerOf(std::string(bobs)).rest(), Lines{std::string(bobs)});
    auto reader = readerOf(std::string(bobs) + "sudo: 3 incorrect password attempts\n");
    ASSERT_TRUE(reader.next());
    EXPECT_EQ(reader.rest(), Lines{"sudo: 3 incorrect password attempts"});
    EXPECT_TRUE(reader.rest().empty());
}

TEST(ReadingPrompts, LeavesOutWhatSteersATerminal) {
    auto reader = readerOf("\x1b[31mRed\x1b[0m\a and\tblank\x7f\x1b]\n\x1b[");
    EXPECT_EQ(reader.rest(), Lines{"Red and blank"});
}

TEST(ReadingPrompts, KeepsTheLastPartOfEndlessOutput) {
    PromptReader reader;
    for (int i = 0; i < 1000; ++i) {
        reader.append(std::string(1000, 'x') + '\n');
    }
    reader.append(bobs);
    const auto question = reader.next();
    ASSERT_TRUE(question);
    EXPECT_LT(question->said.size(), 20U);
}

}  // namespace
