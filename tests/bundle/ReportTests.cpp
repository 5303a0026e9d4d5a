#include "tools/wickfield-bundle/check/Report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "tools/wickfield-bundle/check/ReportText.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

Finding finding(Severity severity, const std::string& rule, const std::string& place) {
    return {.severity = severity, .rule = rule, .place = place, .reason = "Why.", .remedy = "What to do."};
}

TEST(TextReports, SayHowManyThereAre) {
    EXPECT_EQ(textReport("Small.app", {}, 0), "Small.app: 0 errors, 0 warnings, 0 notes\n");
    const Findings findings{finding(Severity::error, "a", "x"), finding(Severity::warning, "b", "x"),
                            finding(Severity::warning, "b", "y"), finding(Severity::note, "c", "x")};
    EXPECT_THAT(textReport("Small.app", findings, 0), EndsWith("\nSmall.app: 1 error, 2 warnings, 1 note\n"));
}

TEST(TextReports, SayWhatIsWrongWhereAndWhatToDo) {
    EXPECT_THAT(textReport("Small.app", {finding(Severity::error, "rule-name", "Contents/x")}, 0),
                StartsWith("error rule-name\n  Contents/x\n    Why.\n    > What to do.\n\n"));
}

TEST(TextReports, NameTheBundleWhereAFindingIsAboutAllOfIt) {
    EXPECT_THAT(textReport("Small.app", {finding(Severity::error, "rule-name", "")}, 0),
                HasSubstr("error rule-name\n  Small.app\n"));
}

TEST(TextReports, SayOnceWhatIsTheSameForPlacesInARow) {
    Findings findings{finding(Severity::error, "a", "1"), finding(Severity::error, "a", "2"),
                      finding(Severity::error, "a", "3")};
    findings[2].reason = "Another.";
    EXPECT_THAT(textReport("Small.app", findings, 0),
                StartsWith("error a\n  1\n  2\n    Why.\n  3\n    Another.\n    > What to do.\n\n"));
}

TEST(TextReports, PutTheWorstFirstWhateverTheOrder) {
    const Findings findings{finding(Severity::note, "c", "1"), finding(Severity::error, "a", "2"),
                            finding(Severity::warning, "b", "3")};
    const std::string text = textReport("Small.app", findings, 0);
    EXPECT_LT(text.find("error a"), text.find("warning b"));
    EXPECT_LT(text.find("warning b"), text.find("note c"));
}

TEST(TextReports, CountWhatIsTooMuchToName) {
    Findings findings;
    for (int number = 0; number < 100000; ++number) {
        findings.push_back(finding(Severity::error, "a", "place " + std::to_string(number)));
    }
    const std::string text = textReport("Small.app", findings, 0);
    EXPECT_THAT(text, HasSubstr("  place 9\n"));
    EXPECT_THAT(text, Not(HasSubstr("place 10")));
    EXPECT_THAT(text, HasSubstr("  and 99990 more, which --json lists\n"));
    EXPECT_THAT(text, HasSubstr("100000 errors"));
}

TEST(TextReports, LeaveNothingThatCouldActOnATerminal) {
    Finding bad = finding(Severity::error, "a", "x\n\x1b[2J\xff");
    bad.reason = "It is \"\x1b]0;title\a\xE2\x80\xAE\".";
    const std::string text = textReport("B\r.app", {bad}, 40);
    EXPECT_EQ(std::ranges::count_if(text, [](char c) { return static_cast<unsigned char>(c) < ' ' && c != '\n'; }), 0);
    EXPECT_THAT(text, HasSubstr("x\\n\\x1B[2J\\xFF"));
    EXPECT_THAT(text, HasSubstr("\\u202E"));
}

TEST(TextReports, ShortenPathsThatNobodyReads) {
    std::string place;
    for (int count = 0; count < 4000; ++count) {
        place += "\xC3\xA4";
    }
    const std::string text = textReport("Small.app", {finding(Severity::error, "a", place)}, 0);
    EXPECT_LT(text.size(), 700U);
    EXPECT_THAT(text, HasSubstr("\xC3\xA4[...]\xC3\xA4"));
}

TEST(Paragraphs, EndTheirLinesAtTheTerminalsEdge) {
    EXPECT_EQ(paragraph("one two three four", 2, 11), "  one two\n  three\n  four\n");
    EXPECT_EQ(paragraph("one two three four", 2, 0), "  one two three four\n");
    EXPECT_EQ(paragraph("", 2, 10), "\n");
}

TEST(Paragraphs, LetAWordThatIsTooLongStandAlone) {
    EXPECT_EQ(paragraph("a bbbbbbbbbbbbbbbb c", 0, 5), "a\nbbbbbbbbbbbbbbbb\nc\n");
}

TEST(Paragraphs, CountWideCharactersTwice) {
    EXPECT_EQ(paragraph("残響 残響", 0, 9), "残響 残響\n");
    EXPECT_EQ(paragraph("残響 残響", 0, 8), "残響\n残響\n");
}

TEST(JSONReports, HaveEveryFinding) {
    Findings findings;
    for (int number = 0; number < 100000; ++number) {
        findings.push_back(finding(Severity::warning, "a", std::to_string(number)));
    }
    const auto report = nlohmann::json::parse(jsonReport("Small.app", findings));
    EXPECT_EQ(report["findings"].size(), 100000U);
    EXPECT_EQ(report["warnings"], 100000);
}

TEST(JSONReports, HaveTheirKeysAsDocumented) {
    const auto report =
        nlohmann::json::parse(jsonReport("Small.app", {finding(Severity::error, "rule-name", "Contents/x")}));
    EXPECT_EQ(report, (nlohmann::json{{"format", 1},
                                      {"bundle", "Small.app"},
                                      {"errors", 1},
                                      {"warnings", 0},
                                      {"notes", 0},
                                      {"findings",
                                       {{{"severity", "error"},
                                         {"rule", "rule-name"},
                                         {"place", "Contents/x"},
                                         {"reason", "Why."},
                                         {"remedy", "What to do."}}}}}));
}

TEST(JSONReports, AreValidWithoutAFinding) {
    EXPECT_TRUE(nlohmann::json::parse(jsonReport("Small.app", {}))["findings"].empty());
}

TEST(JSONReports, AreValidForNamesOfAnyBytes) {
    const std::string text =
        jsonReport("\xff\"\\.app", {finding(Severity::error, "a", "x\n\x1b\xC3 \"\\ \xE2\x80\xAE")});
    EXPECT_TRUE(std::ranges::all_of(text, [](unsigned char c) { return c == '\n' || (c >= ' ' && c < 0x7F); }));
    const auto report = nlohmann::json::parse(text);
    EXPECT_EQ(report["bundle"], "\xEF\xBF\xBD\"\\.app");
    EXPECT_EQ(report["findings"][0]["place"], "x\n\x1b\xEF\xBF\xBD \"\\ \xE2\x80\xAE");
    EXPECT_EQ(report["findings"][0]["placeBytes"], "780a1bc320225c20e280ae");
}

TEST(RuleTables, HaveEveryNameOnceAndInOneSpelling) {
    std::set<std::string_view> names;
    for (const Rule& rule : allRules()) {
        EXPECT_TRUE(names.insert(rule.name).second) << rule.name;
        EXPECT_TRUE(std::ranges::all_of(rule.name, [](char c) {
            return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
        })) << rule.name;
        EXPECT_FALSE(rule.name.empty() || rule.name.starts_with('-') || rule.name.ends_with('-')) << rule.name;
    }
}

TEST(RuleTables, SayWhatToDoAboutAllButNotes) {
    for (const Rule& rule : allRules()) {
        EXPECT_TRUE(rule.meaning.ends_with('.')) << rule.name;
        EXPECT_TRUE(rule.severity == Severity::note || rule.remedy.ends_with('.')) << rule.name;
    }
}

TEST(RuleTables, AreListedInFull) {
    EXPECT_EQ(nlohmann::json::parse(jsonOfRules()).size(), ruleTable.size() + contentRuleTable.size());
    const std::string text = textOfRules(80);
    for (const Rule& rule : allRules()) {
        EXPECT_THAT(text, HasSubstr(" " + std::string(rule.name) + "\n"));
    }
}

}  // namespace
}  // namespace wickfield_bundle
