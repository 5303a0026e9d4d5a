#include "tests/bundle/SettingsFixture.h"

namespace wickfield_bundle {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class CheckingAgreements : public CheckingSettings {};

TEST_F(CheckingAgreements, HasNothingToSayOfWhatEveryHostReads) {
    for (const auto& [name, text] :
         std::vector<std::pair<std::string, std::string>>{{"L.rtf", "{\\rtf1 text}"},
                                                          {"L.txt",
                                                           "Gr\xC3\xBC\xC3\x9F"
                                                           "e\n"},
                                                          {"L.html", "<meta charset=utf-8><p>gr\xC3\xBC\xC3\x9F"},
                                                          {"L", "text"},
                                                          {"L.doc", "{\\rtf1 rich text under another name}"}}) {
        agreement(name, text);
        EXPECT_THAT(rules(), IsEmpty()) << name;
    }
}

TEST_F(CheckingAgreements, TakesAFolderOfRichText) {
    settings({{"KZEULAPath", "<string>L.rtfd</string>"}});
    write("Contents/Resources/L.rtfd/TXT.rtf", "{\\rtf1 text}");
    EXPECT_THAT(rules(), IsEmpty());
}

TEST_F(CheckingAgreements, CallsTheFilesOfWordProcessorsAnError) {
    for (const char* name : {"L.doc", "L.DOCX", "L.odt", "L.webarchive", "L.rtf"}) {
        agreement(name, std::string("PK\3\4\0\0", 6));
        EXPECT_THAT(rules(), ElementsAre("agreement-kind")) << name;
    }
}

TEST_F(CheckingAgreements, NotesTextsThatCallThemselvesSomethingElse) {
    for (const char* name : {"L.pdf", "L.Docx", "L.rtf", "L.md"}) {
        agreement(name, "You agree.\n");
        EXPECT_THAT(rules(), ElementsAre("agreement-extension")) << name;
    }
    agreement("Licence.pdf", "You agree.\n");
    EXPECT_EQ(theReason(), "Its name ends in .pdf, but it is shown as plain text.");
}

TEST_F(CheckingAgreements, TakesNoVersionForAnExtension) {
    for (const char* name : {"EULA 1.0", "Licence", "L.TXT", "L.text"}) {
        agreement(name, "You agree.\n");
        EXPECT_THAT(rules(), IsEmpty()) << name;
    }
}

TEST_F(CheckingAgreements, CallsWhatNoHostReadsAnError) {
    agreement("L.pdf", "%PDF-1.7\n");
    EXPECT_THAT(rules(), ElementsAre("agreement-kind"));
    agreement("L.png", std::string("\x89PNG\0\0", 6));
    EXPECT_THAT(rules(), ElementsAre("agreement-kind"));
}

TEST_F(CheckingAgreements, WarnsOfLettersThatHostsGuessDifferently) {
    agreement("L.txt", "gr\xFC\xDF\n");
    EXPECT_THAT(rules(), ElementsAre("agreement-encoding"));
    agreement("L.html", "<p>gr\xC3\xBC\xC3\x9F");
    EXPECT_THAT(rules(), ElementsAre("agreement-encoding"));
    agreement("L.txt", std::string("\xFF\xFEg\0\n\0", 6));
    EXPECT_THAT(rules(), IsEmpty());
}

TEST_F(CheckingAgreements, WarnsOfWhatHasToBeFetched) {
    agreement("L.html", "<p><img src=https://example.com/logo.png>");
    EXPECT_THAT(rules(), ElementsAre("agreement-remote"));
    EXPECT_EQ(theReason(), "It refers to https://example.com/logo.png.");
}

TEST_F(CheckingAgreements, WarnsOfPicturesThatAreNotThere) {
    agreement("L.html", "<p><img src=logo.png><img src=there.png>");
    write("Contents/Resources/there.png");
    EXPECT_THAT(rules(), ElementsAre("agreement-picture-missing"));
}

TEST_F(CheckingAgreements, CallsAnEmptyOneAnError) {
    agreement("L.txt", " \n");
    answer(R"({"ok":true,"characters":0,"pictures":0,"complete":true})");
    EXPECT_THAT(rules(), ElementsAre("agreement-empty"));
    answer(R"({"ok":true,"characters":0,"pictures":1,"complete":true})");
    EXPECT_THAT(rules(), IsEmpty());
}

TEST_F(CheckingAgreements, WarnsOfOneThatIsShownInPart) {
    agreement("L.txt", "long\n");
    answer(R"({"ok":true,"characters":2000000,"pictures":0,"complete":false})");
    EXPECT_THAT(rules(), ElementsAre("agreement-cut"));
}

TEST_F(CheckingAgreements, CallsOneThatCannotBeReadAnError) {
    agreement("L.txt", "text\n");
    answer(R"({"ok":false,"reason":"it is torn"})");
    EXPECT_THAT(rules(), ElementsAre("agreement-unreadable"));
    EXPECT_EQ(theReason(), "It cannot be read: it is torn.");
}

TEST_F(CheckingAgreements, CallsOneThatEndsItsReaderAnError) {
    agreement("L.txt", "text\n");
    helper("kill -SEGV $$");
    EXPECT_THAT(rules(), ElementsAre("agreement-unreadable"));
}

TEST_F(CheckingAgreements, SaysWhatCouldNotBeFoundOut) {
    agreement("L.txt", "text\n");
    noHelper();
    EXPECT_THAT(rules(), ElementsAre("not-checked"));
    EXPECT_THAT(theReason(), HasSubstr("wickfield-media is missing"));
    helper("exit 3");
    EXPECT_THAT(theReason(), HasSubstr("Qt does not work here"));
    for (const char* line : {"", "[]", "{}", "{\"ok\":1}", "nonsense", "{\"ok\":true"}) {
        answer(line);
        EXPECT_THAT(rules(), ElementsAre("not-checked")) << line;
    }
}

TEST_F(CheckingAgreements, BelievesNoNumbersThatAreNone) {
    agreement("L.txt", "text\n");
    answer(R"({"ok":true,"characters":-5,"pictures":"x","complete":7})");
    EXPECT_THAT(rules(), ElementsAre("agreement-empty"));
}

}  // namespace
}  // namespace wickfield_bundle
