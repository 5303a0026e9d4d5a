#include "platform/linux/qt/PasswordWording.h"

#include <gtest/gtest.h>

#include <QStringList>

#include "platform/linux/qt/QtText.h"

using platform::qt::toQt;
using platform::rights::Administrator;

namespace {

std::string headline(const std::string& asker) { return platform::qt::headline(toQt(asker)).toStdString(); }
std::string shownName(const Administrator& administrator) {
    return platform::qt::shownName(administrator).toStdString();
}
std::string details(const std::string& text) { return platform::qt::detailsText(text).toStdString(); }

const std::string zeroWidthSpace = "\u200b";

std::string isolated(const std::string& text) { return "\u2068" + text + "\u2069"; }

qsizetype longestPiece(const std::string& text) {
    qsizetype longest = 0;
    for (const auto& line : toQt(text).split(QChar(0x200B))) {
        for (const auto& word : line.split(u' ')) {
            longest = std::max(longest, word.size());
        }
    }
    return longest;
}

}  // namespace

TEST(PasswordWording, SaysWhoAsks) {
    EXPECT_EQ(headline("Larkspur Reverb Installer"), isolated("Larkspur Reverb Installer") + " wants to make changes.");
}

TEST(PasswordWording, CutsAnAskerThatGoesOn) {
    const std::string made = headline(std::string(3'000'000, 'a'));
    EXPECT_LT(made.size(), 200U);
    EXPECT_NE(made.find("\u2026\u2069 wants to make changes."), std::string::npos);
}

TEST(PasswordWording, KeepsAnAskerWithPlaceholdersAsItIs) {
    EXPECT_EQ(headline("%1 %2"), isolated("%1 %2") + " wants to make changes.");
}

TEST(PasswordWording, ShowsTheRealNameWithTheAccountsOwn) {
    EXPECT_EQ(shownName({"ann", "Ann Other"}), isolated("Ann Other") + " (ann)");
}

TEST(PasswordWording, ShowsTheAccountsNameAloneWithoutAnother) {
    EXPECT_EQ(shownName({"ann", ""}), "ann");
    EXPECT_EQ(shownName({"ann", "ann"}), "ann");
}

TEST(PasswordWording, KeepsTheDirectionOfARealNameToItself) {
    EXPECT_EQ(shownName({"dana", "\u05d3\u05e0\u05d4"}), isolated("\u05d3\u05e0\u05d4") + " (dana)");
}

TEST(PasswordWording, TakesDirectionOverridesOutOfARealName) {
    EXPECT_EQ(shownName({"eve", "\u202e(toor)\u2066 x\u2069"}), isolated("(toor) x") + " (eve)");
}

TEST(PasswordWording, KeepsANameOnOneLine) {
    EXPECT_EQ(shownName({"eve", "Eve\nThe system wants\u2028your\tpassword"}),
              isolated("Eve The system wants your password") + " (eve)");
}

TEST(PasswordWording, KnowsAnAccountByItsNameAndByHowItIsShown) {
    const std::vector<Administrator> known{{"ann", "Ann Other"}, {"bob", ""}};
    const auto named = [&](const std::string& typed) { return platform::qt::namedUser(toQt(typed), known); };
    EXPECT_EQ(named(shownName(known[0])), "ann");
    EXPECT_EQ(named("bob"), "bob");
    EXPECT_EQ(named("  carol "), "carol");
    EXPECT_EQ(named("   "), "");
}

TEST(PasswordWording, AsksForAPasswordUnlessTheMachineAsksForSomethingElse) {
    EXPECT_EQ(platform::qt::questionLabel("").toStdString(), "&Password:");
    EXPECT_EQ(platform::qt::questionLabel("Code from R&D: ").toStdString(), "Code from R&&D:");
}

TEST(PasswordWording, PutsDetailsOnOneLine) {
    EXPECT_EQ(details("  Account locked.\n\nTry in 10 minutes.\x1b[2J "), "Account locked. Try in 10 minutes. [2J");
}

TEST(PasswordWording, CutsDetailsThatGoOn) {
    const std::string made = details(std::string(1'000'000, 'a') + " end");
    EXPECT_LT(made.size(), 600U);
    EXPECT_EQ(made.substr(made.size() - 3), "\u2026");
}

TEST(PasswordWording, CutsBetweenCharacters) {
    std::string text = "a";
    for (int i = 0; i < 500; ++i) {
        text += "\U0001F511";
    }
    EXPECT_EQ(details(text).find("\ufffd"), std::string::npos);
}

TEST(PasswordWording, LetsLongWordsBeBroken) {
    const std::string made = details(std::string(200, 'a'));
    EXPECT_LE(longestPiece(made), 24);
    EXPECT_LE(longestPiece(headline(std::string(90, 'W'))), 27);
}

TEST(PasswordWording, DoesNotBreakWordsThatAreShort) {
    const std::string text = "Sorry, user ann may not run sudo on this machine.";
    EXPECT_EQ(details(text), text);
}

TEST(PasswordWording, SaysNothingWithoutAProblem) {
    EXPECT_TRUE(platform::qt::problemText(platform::rights::PasswordRequest::Problem::none).isEmpty());
}
