#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/linux/PropertyListFixture.h"

namespace {

using fixture::PropertyArray;
using fixture::PropertyData;
using fixture::PropertyDictionary;
using fixture::refusalOf;
using fixture::text;
using fixture::value;
using fixture::valueOf;
using testing::HasSubstr;

TEST(OldStylePropertyList, HoldsStringsDataArraysAndDictionaries) {
    EXPECT_EQ(valueOf("{ name = \"A Synth\"; version = 1.0; list = (a, 'b c', ()); data = <0fBd 77\n01>; sub = {}; }"),
              value(PropertyDictionary{{"name", text("A Synth")},
                                       {"version", text("1.0")},
                                       {"list", value(PropertyArray{text("a"), text("b c"), value(PropertyArray{})})},
                                       {"data", value(PropertyData{0x0F, 0xBD, 0x77, 0x01})},
                                       {"sub", value(PropertyDictionary{})}}));
}

TEST(OldStylePropertyList, MayHaveAnyKindOfRoot) {
    EXPECT_EQ(valueOf("word"), text("word"));
    EXPECT_EQ(valueOf(" \"two words\"\n"), text("two words"));
    EXPECT_EQ(valueOf("(a, b,)"), value(PropertyArray{text("a"), text("b")}));
    EXPECT_EQ(valueOf("<00ff>"), value(PropertyData{0, 255}));
    EXPECT_EQ(valueOf("<>"), value(PropertyData{}));
    EXPECT_EQ(valueOf("<da7a>"), value(PropertyData{0xDA, 0x7A}));
}

TEST(OldStylePropertyList, OfPairsWithoutBracesIsADictionary) {
    EXPECT_EQ(valueOf("/* Buttons */\n\"OK\" = \"In Ordnung\";\n// none\nCancel = Abbrechen;\n"),
              value(PropertyDictionary{{"OK", text("In Ordnung")}, {"Cancel", text("Abbrechen")}}));
}

TEST(OldStylePropertyList, OfAKeyWithoutValueHasTheKeyAsValue) {
    EXPECT_EQ(valueOf("OK;\nCancel = Abbrechen;"),
              value(PropertyDictionary{{"OK", text("OK")}, {"Cancel", text("Abbrechen")}}));
}

TEST(OldStylePropertyList, OfBlanksAndCommentsAloneIsAnEmptyDictionary) {
    for (const char* list : {" ", "\n\n", "// nothing", "/* nothing */ \t", "\r\n// nothing\r\n"}) {
        EXPECT_EQ(valueOf(list), value(PropertyDictionary{})) << list;
    }
}

TEST(OldStylePropertyList, SkipsCommentsBetweenAnyTwoTokens) {
    EXPECT_EQ(valueOf("{/**/a /* = */ = // x\n b /**/;}"), value(PropertyDictionary{{"a", text("b")}}));
    EXPECT_EQ(valueOf("{ a = /* } */ b; }"), value(PropertyDictionary{{"a", text("b")}}));
    EXPECT_EQ(valueOf("{ a = b; // }\r}"), value(PropertyDictionary{{"a", text("b")}}));
}

TEST(OldStylePropertyList, TakesASlashInAWordForPartOfTheWord) {
    EXPECT_EQ(valueOf("a//b = c//d;"), value(PropertyDictionary{{"a//b", text("c//d")}}));
    EXPECT_THAT(refusalOf("a/* x */ = b;"), HasSubstr("cannot be read"));
}

TEST(OldStylePropertyList, TakesPathsAndIdentifiersWithoutQuotes) {
    EXPECT_EQ(valueOf("{ a-b.c:d = /usr/lib/$x_1; }"), value(PropertyDictionary{{"a-b.c:d", text("/usr/lib/$x_1")}}));
}

TEST(OldStylePropertyList, UnderstandsEscapesInQuotes) {
    EXPECT_EQ(valueOf(R"("\a\b\f\n\r\t\v\"\'\\\q")"), text("\a\b\f\n\r\t\v\"'\\q"));
    EXPECT_EQ(valueOf("\"a\\\nb\""), text("a\nb"));
    EXPECT_EQ(valueOf(R"("\101\60x\7")"), text("A0x\a"));
    EXPECT_EQ(valueOf(R"("\U00e9\U20AC")"), text("é€"));
    EXPECT_EQ(valueOf(R"("\Ud83c\Udfb9")"), text("🎹"));
}

TEST(OldStylePropertyList, ReadsOctalEscapesInTheFormsOwnCharacterSet) {
    EXPECT_EQ(valueOf(R"("\200\201\235\341\343\373\375")"), text("\u00A0ÀµÆªßÿ")) << "a sample of its rows";
}

TEST(OldStylePropertyList, HasReplacementCharactersForLoneSurrogates) {
    EXPECT_EQ(valueOf(R"("\Ud83cx")"), text("\uFFFDx"));
    EXPECT_EQ(valueOf(R"("\Ud83c\U0041")"), text("\uFFFDA"));
    EXPECT_EQ(valueOf(R"("\Udfb9")"), text("\uFFFD"));
}

TEST(OldStylePropertyList, KeepsTheOtherKindOfQuote) {
    EXPECT_EQ(valueOf("'say \"hi\"'"), text("say \"hi\""));
    EXPECT_EQ(valueOf("\"it's\""), text("it's"));
}

TEST(OldStylePropertyList, TakesTheLastOfEqualKeys) {
    EXPECT_EQ(valueOf("a = 1; a = 2;"), value(PropertyDictionary{{"a", text("2")}}));
}

TEST(OldStylePropertyList, MayHaveAnEmptyKey) {
    EXPECT_EQ(valueOf("\"\" = x;"), value(PropertyDictionary{{"", text("x")}}));
}

TEST(OldStylePropertyList, IsRefusedWhenItIsNotInOrder) {
    for (const char* list : {"{",        "}",    "{ a = b }", "{ a = ; }",    "{ = b; }", "{ a b; }", "{ (a) = b; }",
                             "{ a = b;", "(",    "(a b)",     "(,)",          "(a,,b)",   "(a",       "<",
                             "<0>",      "<0g>", "<00",       "<000>",        "\"",       "\"abc",    "'abc\"",
                             "\"abc\\",  "/* x", "a b",       "a = b",        "a = b; }", "{} {}",    "a = b; c",
                             "= b;",     ";",    "@",         "{ a = b; } x", "a = b;;"}) {
        EXPECT_THAT(refusalOf(list), HasSubstr("cannot be read")) << list;
    }
}

TEST(OldStylePropertyList, CutShortAnywhereIsRefused) {
    const std::string whole = "{ a = (b, \"c\\U00e9\"); /* x */ d = <00 ff>; }";
    ASSERT_EQ(refusalOf(whole), "");
    for (std::size_t length = 1; length < whole.size(); ++length) {
        ASSERT_NE(refusalOf(whole.substr(0, length)), "") << whole.substr(0, length);
    }
}

TEST(OldStylePropertyList, SaysInWhichLineItIsWrong) {
    EXPECT_THAT(refusalOf("{\n  a = b;\n  c = ;\n}"), HasSubstr("(line 3)"));
}

TEST(OldStylePropertyList, MayNestToALimit) {
    const auto nested = [](std::size_t depth) { return std::string(depth, '(') + std::string(depth, ')'); };

    EXPECT_EQ(refusalOf(nested(512)), "");
    EXPECT_THAT(refusalOf(nested(513)), HasSubstr("too deeply"));
    EXPECT_THAT(refusalOf(nested(5'000'000)), HasSubstr("too deeply"));
    EXPECT_THAT(refusalOf(std::string(5'000'000, '{')), HasSubstr("cannot be read"));
}

}  // namespace
