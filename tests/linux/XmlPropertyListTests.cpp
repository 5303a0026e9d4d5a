#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/linux/PropertyListFixture.h"

namespace {

using fixture::integer;
using fixture::PropertyArray;
using fixture::PropertyData;
using fixture::PropertyDictionary;
using fixture::PropertyValue;
using fixture::refusalOf;
using fixture::secondsSince1970;
using fixture::text;
using fixture::value;
using fixture::valueOf;
using testing::HasSubstr;

std::string plist(const std::string& content) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n" +
           content + "\n</plist>\n";
}

PropertyValue read(const std::string& content) { return valueOf(plist(content)); }

TEST(XmlPropertyList, HoldsEveryKindOfValue) {
    const auto list = read(
        "<dict>"
        "<key>s</key><string>text</string><key>i</key><integer>-42</integer><key>r</key><real>1.5</real>"
        "<key>t</key><true/><key>f</key><false/><key>d</key><date>2026-11-21T01:15:00Z</date>"
        "<key>b</key><data>AQID</data><key>a</key><array><string>x</string><integer>1</integer></array>"
        "<key>k</key><dict><key>n</key><string/></dict>"
        "</dict>");

    EXPECT_EQ(list, value(PropertyDictionary{{"s", text("text")},
                                             {"i", integer(-42)},
                                             {"r", value(1.5)},
                                             {"t", value(true)},
                                             {"f", value(false)},
                                             {"d", value(secondsSince1970(1795223700))},
                                             {"b", value(PropertyData{1, 2, 3})},
                                             {"a", value(PropertyArray{text("x"), integer(1)})},
                                             {"k", value(PropertyDictionary{{"n", text("")}})}}));
}

TEST(XmlPropertyList, MayHaveAnyKindOfRoot) {
    EXPECT_EQ(read("<string>x</string>"), text("x"));
    EXPECT_EQ(read("<array/>"), value(PropertyArray{}));
    EXPECT_EQ(read("<true></true>"), value(true));
}

TEST(XmlPropertyList, MayLackDeclarationAndPlistElement) {
    EXPECT_EQ(valueOf("<dict><key>a</key><string>b</string></dict>"), value(PropertyDictionary{{"a", text("b")}}));
    EXPECT_EQ(valueOf("\n <plist><true/></plist>"), value(true));
}

TEST(XmlPropertyList, KeepsTheBlanksOfStrings) { EXPECT_EQ(read("<string> a\n b\t</string>"), text(" a\n b\t")); }

TEST(XmlPropertyList, ReadsEveryEndOfALineAsANewLine) {
    EXPECT_EQ(read("<string>a\r\nb\rc&#13;</string>"), text("a\nb\nc\r"));
}

TEST(XmlPropertyList, UnderstandsReferencesCdataAndCommentsInText) {
    EXPECT_EQ(read("<string>&lt;&gt;&amp;&quot;&apos;&#65;&#x1F3B9;</string>"), text("<>&\"'A🎹"));
    EXPECT_EQ(read("<string>a<![CDATA[<b>&amp;]]>c</string>"), text("a<b>&amp;c"));
    EXPECT_EQ(read("<string>a<!-- no <b> -->c</string>"), text("ac"));
}

TEST(XmlPropertyList, SkipsCommentsAndInstructionsBetweenElements) {
    EXPECT_EQ(read("<!-- <dict> --><?x y?><dict><!-- - --><key>a</key><!-- b --><true/></dict><!---->"),
              value(PropertyDictionary{{"a", value(true)}}));
}

TEST(XmlPropertyList, IgnoresAttributesWhateverTheyHold) {
    EXPECT_EQ(valueOf("<plist version='>' x=\"/\"><string a=\"/string>\">x</string></plist >"), text("x"));
}

TEST(XmlPropertyList, KeepsIntegersOfSixtyFourBits) {
    EXPECT_EQ(read("<integer>9223372036854775807</integer>"), integer(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(read("<integer>-9223372036854775808</integer>"), integer(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(read("<integer> +7\n</integer>"), integer(7));
    EXPECT_EQ(read("<integer>0x1F</integer>"), integer(31));
    EXPECT_EQ(read("<integer>-0x10</integer>"), integer(-16));
    EXPECT_EQ(read("<integer>007</integer>"), integer(7));
}

TEST(XmlPropertyList, TurnsLargerIntegersIntoReals) {
    EXPECT_EQ(read("<integer>9223372036854775808</integer>"), value(9223372036854775808.0));
    EXPECT_EQ(read("<integer>-9223372036854775809</integer>"), value(-9223372036854775808.0));
    EXPECT_EQ(read("<integer>18446744073709551616</integer>"), value(18446744073709551616.0));
    EXPECT_EQ(read("<integer>0x10000000000000000</integer>"), value(18446744073709551616.0));
    EXPECT_EQ(read("<integer>" + std::string(400, '9') + "</integer>"), value(std::numeric_limits<double>::infinity()));
}

TEST(XmlPropertyList, ReadsRealsInEveryForm) {
    EXPECT_EQ(read("<real>-2.5e3</real>"), value(-2500.0));
    EXPECT_EQ(read("<real>3</real>"), value(3.0));
    EXPECT_EQ(read("<real>+infinity</real>"), value(std::numeric_limits<double>::infinity()));
    EXPECT_EQ(read("<real>-inf</real>"), value(-std::numeric_limits<double>::infinity()));
    const auto notANumber = read("<real>nan</real>");
    ASSERT_NE(notANumber.as<double>(), nullptr);
    EXPECT_TRUE(std::isnan(*notANumber.as<double>()));
}

TEST(XmlPropertyList, ReadsDatesBefore1970) {
    EXPECT_EQ(read("<date>1969-12-31T23:59:59Z</date>"), value(secondsSince1970(-1)));
    EXPECT_EQ(read("<date>1904-01-01T00:00:00Z</date>"), value(secondsSince1970(-2082844800)));
}

TEST(XmlPropertyList, MovesDatesThatCannotBeHeldToTheNearestThatCan) {
    EXPECT_EQ(read("<date>0001-01-01T00:00:00Z</date>"), value(platform::Date::min()));
    EXPECT_EQ(read("<date>4001-01-01T00:00:00Z</date>"), value(platform::Date::max()));
    EXPECT_EQ(read("<date>-0044-03-15T12:00:00Z</date>"), value(platform::Date::min()));
}

TEST(XmlPropertyList, TakesTheLastOfEqualKeys) {
    EXPECT_EQ(read("<dict><key>a</key><integer>1</integer><key>a</key><integer>2</integer></dict>"),
              value(PropertyDictionary{{"a", integer(2)}}));
}

TEST(XmlPropertyList, MayHaveAnEmptyKey) {
    EXPECT_EQ(read("<dict><key/><integer>1</integer></dict>"), value(PropertyDictionary{{"", integer(1)}}));
    EXPECT_EQ(read("<dict><key></key><integer>1</integer></dict>"), value(PropertyDictionary{{"", integer(1)}}));
}

TEST(XmlPropertyList, DoesNotTakeOneKindForAnother) {
    for (const char* content : {"<integer>1.5</integer>",
                                "<integer>one</integer>",
                                "<integer/>",
                                "<integer>1 2</integer>",
                                "<integer>--1</integer>",
                                "<integer>0x</integer>",
                                "<real/>",
                                "<real>1,5</real>",
                                "<real>+-1</real>",
                                "<real>one</real>",
                                "<date/>",
                                "<date>today</date>",
                                "<date>2026-13-01T00:00:00Z</date>",
                                "<date>2026-02-29T00:00:00Z</date>",
                                "<date>2026-01-01T24:00:00Z</date>",
                                "<date>2026-01-01</date>",
                                "<date>2026-01-01T00:00:00Zx</date>",
                                "<date>2026-01--1T00:00:00Z</date>",
                                "<data>*</data>",
                                "<true>yes</true>"}) {
        EXPECT_THAT(refusalOf(plist(content)), HasSubstr("cannot be read")) << content;
    }
}

TEST(XmlPropertyList, IsRefusedWhenItsElementsAreNotInOrder) {
    for (const char* content : {"",
                                "<plist/>",
                                "<key>a</key>",
                                "<bool/>",
                                "<dict><string>a</string><string>b</string></dict>",
                                "<dict><key>a</key></dict>",
                                "<dict><key>a</key><key>b</key></dict>",
                                "<array><true/></dict>",
                                "<array></true></array>",
                                "<string>a</key>",
                                "<true/><true/>",
                                "text",
                                "<array>text</array>",
                                "</array>",
                                "<string>a<b/></string>",
                                "<string>&unknown;</string>",
                                "<string>&#xZZ;</string>",
                                "<string>&#;</string>",
                                "<string>& and &amp;</string>",
                                "<string>&#99999999999999999999;</string>",
                                "<string>&amp</string>",
                                "<array<true/>"}) {
        EXPECT_THAT(refusalOf(plist(content)), HasSubstr("cannot be read")) << content;
    }
}

TEST(XmlPropertyList, IsRefusedWhenSomethingFollowsIt) {
    EXPECT_THAT(refusalOf(plist("<true/>") + "<dict/>"), HasSubstr("something follows"));
    EXPECT_EQ(refusalOf(plist("<true/>") + "\n<!-- the end -->\n"), "");
}

TEST(XmlPropertyList, CutShortAnywhereIsRefused) {
    const std::string whole = plist("<dict><key>a</key><array><string>b&amp;c</string><true/></array></dict>");
    const std::size_t complete = whole.find("</plist>") + std::string("</plist>").size();

    ASSERT_EQ(refusalOf(whole.substr(0, complete)), "");
    for (std::size_t length = 0; length < complete; ++length) {
        ASSERT_NE(refusalOf(whole.substr(0, length)), "") << whole.substr(0, length);
    }
}

TEST(XmlPropertyList, SaysInWhichLineItIsWrong) {
    EXPECT_THAT(refusalOf("<plist>\n<dict>\n<key>a</key>\n<bool/>\n</dict>\n</plist>"),
                testing::AllOf(HasSubstr("\"bool\""), HasSubstr("(line 4)")));
}

TEST(XmlPropertyList, DoesNotExpandEntitiesOfItsOwn) {
    const std::string entities =
        "<!DOCTYPE plist [<!ENTITY a \"ha]>\"><!ENTITY b \"&a;&a;&a;&a;\"><!-- ]> --><!ENTITY f SYSTEM "
        "\"file:///etc/passwd\">]>";

    EXPECT_THAT(refusalOf(entities + "<plist><string>&b;</string></plist>"), HasSubstr("not known"));
    EXPECT_THAT(refusalOf(entities + "<plist><string>&f;</string></plist>"), HasSubstr("not known"));
    EXPECT_EQ(valueOf(entities + "<plist><string>x</string></plist>"), text("x"));
}

TEST(XmlPropertyList, WithChainsOfEntitiesIsRefused) {
    std::string chain = "<!DOCTYPE plist [<!ENTITY e0 \"x\">";  // each of them holds the one before
    for (int i = 1; i < 100'000; ++i) {
        chain += "<!ENTITY e" + std::to_string(i) + " \"&e" + std::to_string(i - 1) + ";\">";
    }
    EXPECT_THAT(refusalOf(chain + "]><plist x='&e99999;'><true/></plist>"), HasSubstr("too many entities"));
    EXPECT_THAT(refusalOf(chain + "<!ATTLIST plist x CDATA '&e99999;'>]><plist><true/></plist>"),
                HasSubstr("too many entities"));
}

TEST(XmlPropertyList, WithAnAttributeThatGrowsThroughEntitiesIsRefused) {
    std::string doubling = "<!DOCTYPE plist [<!ENTITY e0 \"ha\">";
    for (int i = 1; i < 40; ++i) {
        const std::string before = "&e" + std::to_string(i - 1) + ";";
        doubling += "<!ENTITY e" + std::to_string(i) + " \"";
        doubling.append(before).append(before).append("\">");
    }
    EXPECT_THAT(refusalOf(doubling + "]><plist x='&e39;'><true/></plist>"), HasSubstr("amplification"));
    EXPECT_EQ(valueOf(doubling + "]><plist x='&e3;'><true/></plist>"), value(true));
}

TEST(XmlPropertyList, NeverLoadsWhatItsDocumentTypeNames) {
    EXPECT_EQ(valueOf("<!DOCTYPE plist SYSTEM \"file:///dev/zero\" [<!ENTITY % all SYSTEM \"file:///dev/zero\"> %all;]>"
                      "<plist><true/></plist>"),
              value(true));
}

TEST(XmlPropertyList, IsRefusedWhenItsDocumentTypeAddsThousandsOfAttributesToEveryElement) {
    std::string list = "<!DOCTYPE plist [<!ATTLIST true";
    for (int i = 0; i < 10'000; ++i) {
        list += " a" + std::to_string(i) + " CDATA 'x'";
    }
    list += ">]><plist><array>";
    for (int i = 0; i < 100'000; ++i) {
        list += "<true/>";
    }
    EXPECT_THAT(refusalOf(list + "</array></plist>"), HasSubstr("more memory"));
}

TEST(XmlPropertyList, MayNestToALimit) {
    const auto nested = [](int depth) {
        std::string open;
        std::string close;
        for (int i = 0; i < depth; ++i) {
            open += "<array>";
            close += "</array>";
        }
        return plist(open + close);
    };

    EXPECT_EQ(refusalOf(nested(512)), "");
    EXPECT_THAT(refusalOf(nested(513)), HasSubstr("too deeply"));
    EXPECT_THAT(refusalOf(nested(1'000'000)), HasSubstr("too deeply"));
}

TEST(XmlPropertyList, OfMillionsOfValuesIsRefusedBeforeItTakesTheMemory) {
    std::string many = "<plist><array>";
    for (int i = 0; i < 1'200'000; ++i) {
        many += "<true/>";
    }
    EXPECT_THAT(refusalOf(many + "</array></plist>"), HasSubstr("more memory"));
}

TEST(XmlPropertyList, MayHoldAHundredMegabytesOfText) {
    const std::string large(100'000'000, 'x');  // NOLINT(bugprone-string-constructor): meant to be large

    const auto read = valueOf("<plist><string>" + large + "</string></plist>");

    ASSERT_NE(read.as<std::string>(), nullptr);
    EXPECT_TRUE(*read.as<std::string>() == large);
}

// Writing.

std::string written(const PropertyValue& list) { return platform::linux_host::LinuxPropertyLists().serialize(list); }

TEST(WrittenPropertyList, IsACompleteXmlDocument) {
    EXPECT_EQ(written(value(PropertyDictionary{{"b", value(PropertyArray{text("x"), value(PropertyArray{})})},
                                               {"a", value(PropertyDictionary{})}})),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
              "<plist version=\"1.0\">\n<dict>\n\t<key>a</key>\n\t<dict/>\n\t<key>b</key>\n\t<array>\n"
              "\t\t<string>x</string>\n\t\t<array/>\n\t</array>\n</dict>\n</plist>\n");
}

TEST(WrittenPropertyList, ReadsBackAsItWas) {
    const auto list = value(PropertyDictionary{
        {"", text("")},
        {"<&>\"'", text("a < b && c > d ]]> \"'\r\n\t\x01\x1B é 🎹")},
        {"nul", text(std::string("a\0b", 3))},
        {"noncharacters", text("\uFFFD\uFFFE\uFFFF")},
        {"\x01", text("")},
        {"\x02", text("")},
        {"min", integer(std::numeric_limits<std::int64_t>::min())},
        {"max", integer(std::numeric_limits<std::int64_t>::max())},
        {"pi", value(3.141592653589793)},
        {"tiny", value(std::numeric_limits<double>::denorm_min())},
        {"huge", value(std::numeric_limits<double>::max())},
        {"infinite", value(-std::numeric_limits<double>::infinity())},
        {"yes", value(true)},
        {"no", value(false)},
        {"old", value(secondsSince1970(-2082844800))},
        {"new", value(secondsSince1970(1795223700))},
        {"data", value(PropertyData{0, 255, 128, 1})},
        {"list", value(PropertyArray{value(PropertyArray{}), value(PropertyDictionary{{"k", integer(0)}})})}});

    EXPECT_EQ(valueOf(written(list)), list);
}

TEST(WrittenPropertyList, HasReplacementCharactersForBytesThatAreNotText) {
    EXPECT_EQ(valueOf(written(text("a\xFFz"))), text("a\uFFFDz"));
}

TEST(WrittenPropertyList, HasInstructionsForCharactersThatXmlHasNoPlaceFor) {
    EXPECT_THAT(written(text("a\x1Bz")), HasSubstr("<string>a<?code-point 27?>z</string>"));
    EXPECT_EQ(read("<string>a<?code-point 27?><?code-point x?><?code-point 1 ?><?other 2?>z</string>"), text("a\x1Bz"));
    EXPECT_EQ(read("<?code-point 27?><true><?code-point 32?></true>"), value(true));
    EXPECT_EQ(read("<string><?code-point 4294967295?></string>"), text("\uFFFD"));
}

TEST(WrittenPropertyList, HoldsTheEarliestAndTheLatestDate) {
    EXPECT_THAT(written(value(platform::Date::min())), HasSubstr("<date>1677-09-21T00:12:43Z</date>"));
    EXPECT_THAT(written(value(platform::Date::max())), HasSubstr("<date>2262-04-11T23:47:16Z</date>"));
}

}  // namespace
