#include "platform/linux/qt/agreement/RtfReader.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>

#include "platform/linux/qt/agreement/AgreementLiterals.h"
#include "tests/qt/AgreementText.h"

namespace {

using platform::qt::operator""_s;  // NOLINT(misc-unused-using-decls): the check overlooks literals

using agreement_tests::textOf;
using platform::qt::RtfDocument;
using platform::qt::RtfLimits;
using platform::qt::RtfParagraph;
using platform::qt::RtfReader;
using platform::qt::RtfTable;

RtfDocument read(const std::string& body) {
    static std::string text;
    text = "{\\rtf1\\ansi " + body + "}";
    return RtfReader(text).read();
}

const RtfParagraph& paragraph(const RtfDocument& document, std::size_t index) {
    return std::get<RtfParagraph>(document.blocks.at(index));
}

TEST(RichText, ShowsItsParagraphs) { EXPECT_EQ(textOf("One\\par Two\\par"), "One\nTwo"); }

TEST(RichText, TakesABackslashBeforeALineEndForAParagraph) { EXPECT_EQ(textOf("One\\\nTwo\\\n"), "One\nTwo"); }

TEST(RichText, KeepsAnEmptyParagraph) { EXPECT_EQ(textOf("One\\par\\par Two"), "One\n\nTwo"); }

TEST(RichText, ShowsEscapedBracesAndBackslashes) { EXPECT_EQ(textOf("\\{a\\\\b\\}"), "{a\\b}"); }

TEST(RichText, ShowsTypographicCharacters) {
    EXPECT_EQ(textOf("\\ldblquote a\\rdblquote \\emdash\\endash\\bullet\\lquote b\\rquote"), "“a”—–•‘b’");
}

TEST(RichText, ShowsHardBlanksAndHyphens) {
    const auto document = read("a\\~b\\_c\\-d");
    EXPECT_EQ(paragraph(document, 0).inlines.at(0).text, u"a\u00A0b\u2011c\u00ADd"_s);
}

TEST(RichText, ReadsBytesByTheCodePageOfTheDocument) {
    EXPECT_EQ(textOf("caf\\'e9 \\'80"), "café €");
    EXPECT_EQ(agreement_tests::plain(*agreement_tests::richText("{\\rtf1\\ansi\\ansicpg1251 \\'cb\\'e8}")), "Ли");
    EXPECT_EQ(agreement_tests::plain(*agreement_tests::richText("{\\rtf1\\mac \\'8e}")), "é");
}

TEST(RichText, ReadsBytesByTheCharacterSetOfTheFont) {
    const std::string fonts =
        "{\\fonttbl{\\f0\\fcharset0 A;}{\\f1\\fcharset204 B;}{\\f2\\fcharset238 C;}{\\f3\\fcharset161 D;}"
        "{\\f4\\fcharset162 E;}{\\f5\\fcharset128 F;}}";
    EXPECT_EQ(textOf(fonts + "\\f1\\'cb\\f2\\'e8\\f3\\'e1\\f4\\'fe\\f5\\'93\\'fa\\f0\\'e9"), "Лčαş日é");
}

TEST(RichText, ReadsACharacterOfTwoBytesWhoseSecondStandsAsText) {
    EXPECT_EQ(textOf("{\\fonttbl{\\f5\\fcharset128 F;}}\\f5\\'83A"), "ア");
}

TEST(RichText, ReadsACodePageThatNobodyKnowsAsWestern) {
    EXPECT_EQ(agreement_tests::plain(*agreement_tests::richText("{\\rtf1\\ansi\\ansicpg31337 \\'e9}")), "é");
}

TEST(RichText, TakesANumberedCharacterAndDropsItsStandIn) {
    EXPECT_EQ(textOf("\\u8364 ?x"), "€x");
    EXPECT_EQ(textOf("\\uc2\\u8364 ??x"), "€x");
    EXPECT_EQ(textOf("\\uc0\\u8364 x"), "€x");
    EXPECT_EQ(textOf("\\u8364\\'80x"), "€x");
}

TEST(RichText, ABraceEndsTheStandInOfANumberedCharacter) { EXPECT_EQ(textOf("{\\uc5\\u8364 ?}x"), "€x"); }

TEST(RichText, JoinsTheHalvesOfANumberedCharacter) { EXPECT_EQ(textOf("\\u-10179 ?\\u-8704 ?"), "😀"); }

TEST(RichText, MarksHalfACharacterAsUnreadable) { EXPECT_EQ(textOf("\\u-10179 ?x"), "\uFFFDx"); }

TEST(RichText, ShowsTheBulletsOfSymbolFonts) {
    const std::string fonts = "{\\fonttbl{\\f3\\fcharset2 Symbol;}{\\f4\\fcharset2 Wingdings;}}";
    EXPECT_EQ(textOf(fonts + "\\f3\\'b7\\u-3913 ?a\\f4\\'a7"), "••α▪");
}

TEST(RichText, SkipsWhatIsNoText) {
    EXPECT_EQ(textOf("{\\info{\\title Secret}}{\\stylesheet{\\s1 Heading;}}{\\header Top}{\\footer Bottom}"
                     "{\\*\\generator Maker;}{\\*\\unknown{\\b also}}Shown"),
              "Shown");
}

TEST(RichText, ShowsTheContentsOfAGroupThatIsUnknownAndNotOptional) { EXPECT_EQ(textOf("{\\neverheard a}b"), "ab"); }

TEST(RichText, SkipsHiddenAndDeletedText) { EXPECT_EQ(textOf("a{\\v b}{\\deleted c}d"), "ad"); }

TEST(RichText, PutsAFootnoteInBracketsWhereItBelongs) {
    EXPECT_EQ(textOf("Text{\\super\\chftn{\\footnote \\pard\\plain\\chftn  Note.\\par More.\\par}} on"),
              "Text [Note. More.] on");
}

TEST(RichText, KeepsAStyleWithinItsGroup) {
    const auto document = read("a{\\b b}c");
    EXPECT_TRUE(paragraph(document, 0).inlines.at(1).style.bold);
    EXPECT_FALSE(paragraph(document, 0).inlines.at(2).style.bold);
}

TEST(RichText, ASwitchIsTurnedOffByZero) {
    const auto document = read("\\b\\i\\ul\\strike a\\b0\\i0\\ulnone\\strike0 b");
    const auto& plain = paragraph(document, 0).inlines.at(1).style;
    EXPECT_FALSE(plain.bold || plain.italic || plain.underline || plain.strikeOut);
}

TEST(RichText, AResetOfTheStyleKeepsTheDefaultFont) {
    const auto document = read("\\deff7\\f2\\b\\plain a");
    EXPECT_EQ(paragraph(document, 0).inlines.at(0).style.font, 7);
}

TEST(RichText, AResetOfTheParagraphForgetsItsIndents) {
    const auto document = read("\\li720\\qc a\\par\\pard b\\par");
    EXPECT_EQ(paragraph(document, 0).style.leftIndent, 720);
    EXPECT_EQ(paragraph(document, 1).style.leftIndent, 0);
}

TEST(RichText, CarriesTheAddressOfALink) {
    const auto document = read("{\\field{\\*\\fldinst{HYPERLINK \"https://example.org/a\"}}{\\fldrslt{\\ul here}}} on");
    EXPECT_EQ(paragraph(document, 0).inlines.at(0).link, u"https://example.org/a"_s);
    EXPECT_TRUE(paragraph(document, 0).inlines.at(1).link.isEmpty());
}

TEST(RichText, ShowsALinkOfADangerousKindAsText) {
    for (const char* address : {"javascript:alert(1)", "file:///etc/passwd", "data:text/html,x", "/bin/sh"}) {
        const auto document =
            read(std::string("{\\field{\\*\\fldinst{HYPERLINK \"") + address + "\"}}{\\fldrslt text}}");
        EXPECT_TRUE(paragraph(document, 0).inlines.at(0).link.isEmpty()) << address;
    }
}

TEST(RichText, LeadsFromALinkToItsBookmark) {
    const auto document = read("{\\field{\\*\\fldinst HYPERLINK \\\\l \"end\"}{\\fldrslt go}}{\\*\\bkmkstart end}x");
    EXPECT_EQ(paragraph(document, 0).inlines.at(0).link, u"#end"_s);
    EXPECT_EQ(paragraph(document, 0).inlines.at(1).anchor, u"end"_s);
}

TEST(RichText, ShowsTheMarksOfAListAsTheyStand) {
    EXPECT_EQ(textOf("\\ls1\\ilvl0{\\listtext\t1.\t}First\\par"), "\t1.\tFirst");
}

TEST(RichText, NumbersAListThatCarriesNoMarks) {
    const std::string lists =
        "{\\*\\listtable{\\list{\\listlevel\\levelnfc0\\levelstartat3{\\leveltext\\'02\\'00.;}{\\levelnumbers\\'01;}}"
        "{\\listlevel\\levelnfc4\\levelstartat1{\\leveltext\\'03(\\'01);}{\\levelnumbers\\'02;}}{\\listname "
        ";}\\listid9}}"
        "{\\*\\listoverridetable{\\listoverride\\listid9\\listoverridecount0\\ls1}}";
    EXPECT_EQ(textOf(lists + "\\ls1 a\\par\\ls1\\ilvl1 b\\par c\\par\\ilvl0 d\\par\\ilvl1 e\\par"),
              "3.\ta\n(a)\tb\n(b)\tc\n4.\td\n(a)\te");
}

TEST(RichText, PutsTheCellsOfARowIntoATable) {
    const auto document = read("\\trowd\\cellx1000\\cellx2000\\intbl a\\cell b\\cell\\row\\pard after\\par");
    const auto& table = std::get<RtfTable>(document.blocks.at(0));
    ASSERT_EQ(table.rows.at(0).cells.size(), 2U);
    EXPECT_EQ(table.rows.at(0).cells.at(1).paragraphs.at(0).inlines.at(0).text, QString(u'b'));
}

TEST(RichText, RowsThatFollowOneAnotherAreOneTable) {
    const auto document = read("\\trowd\\cellx1000\\intbl a\\cell\\row\\intbl b\\cell\\row");
    ASSERT_EQ(document.blocks.size(), 1U);
    EXPECT_EQ(std::get<RtfTable>(document.blocks.at(0)).rows.size(), 2U);
}

TEST(RichText, KeepsTheTextOfARowThatIsNeverEnded) {
    EXPECT_EQ(textOf("\\trowd\\cellx1000\\intbl a\\cell b"), "\na\nb\n");
}

TEST(RichText, ReadsWhatIsThereOfATruncatedText) {
    const std::string whole =
        "{\\rtf1\\ansi{\\fonttbl{\\f0 Helvetica;}}{\\b Bold}\\par\\trowd\\cellx100\\intbl a\\cell\\row"
        "{\\field{\\*\\fldinst{HYPERLINK \"https://example.org\"}}{\\fldrslt link}}\\u8364 ?\\'e9}";
    for (std::size_t length = 0; length <= whole.size(); ++length) {
        const std::string cut = whole.substr(0, length);
        const RtfDocument document = RtfReader(cut).read();
        const bool hasText = length > whole.find("Bold") && length < whole.size();
        EXPECT_TRUE(!hasText || !document.blocks.empty()) << "cut after " << length;
    }
}

TEST(RichText, GoesOnAfterBracesThatCloseNothing) {
    EXPECT_EQ(agreement_tests::plain(*agreement_tests::richText("{\\rtf1 a}}}}}b")), "ab");
}

TEST(RichText, ReadsThroughAMillionOpenBraces) {
    QElapsedTimer clock;
    clock.start();
    EXPECT_EQ(textOf("a" + std::string(1'000'000, '{') + "deep"), "adeep");
    EXPECT_LT(clock.elapsed(), 10'000);
}

TEST(RichText, SurvivesAbsurdNumbers) {
    EXPECT_EQ(
        textOf("\\uc2147483647\\u8364 ?\\par\\li999999999\\fi-999999999\\fs0\\fs99999999\\cf-5\\cf99999\\f-1\\sl-9"
               "\\trowd\\cellx-5\\cellx2147483647\\cellx3\\pard\\tx99999999\\sb99999999 x"),
        "€\nx");
}

QString wordsOf(const RtfParagraph& paragraph) {
    QString words;
    for (const auto& run : paragraph.inlines) {
        words += run.text;
    }
    return words;
}

TEST(RichText, SaysThatItWasCutWhereItIsTooLong) {
    RtfLimits limits;
    limits.paragraphs = 3;
    const RtfDocument document = RtfReader("{\\rtf1 a\\par b\\par c\\par d\\par e\\par}", limits).read();
    EXPECT_EQ(document.blocks.size(), 4U);
    EXPECT_FALSE(document.complete);
}

TEST(RichText, ShowsTheBeginningOfAParagraphThatIsTooLong) {
    RtfLimits limits;
    limits.characters = 6;
    const RtfDocument longRun = RtfReader("{\\rtf1 beginning}", limits).read();
    EXPECT_EQ(wordsOf(paragraph(longRun, 0)), "beginn");
    EXPECT_FALSE(longRun.complete);
    const RtfDocument twoRuns = RtfReader("{\\rtf1 one {\\b two three}\\par four\\par}", limits).read();
    EXPECT_EQ(wordsOf(paragraph(twoRuns, 0)), "one tw");
    EXPECT_EQ(twoRuns.blocks.size(), 1U);
    EXPECT_FALSE(twoRuns.complete);
    const RtfDocument fitting = RtfReader("{\\rtf1 sixish}", limits).read();
    EXPECT_EQ(wordsOf(paragraph(fitting, 0)), "sixish");
    EXPECT_TRUE(fitting.complete);
}

TEST(RichText, CountsAsWholeWhenItIsShort) { EXPECT_TRUE(read("a").complete); }

TEST(RichText, IsEmptyWhenThereIsNothingInIt) {
    EXPECT_TRUE(RtfReader("").read().blocks.empty());
    EXPECT_TRUE(RtfReader("{\\rtf1}").read().blocks.empty());
}

}  // namespace
