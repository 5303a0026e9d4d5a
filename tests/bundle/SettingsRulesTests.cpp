#include "tools/wickfield-bundle/check/SettingsRules.h"

#include <cstdlib>
#include <optional>

#include "tests/bundle/SettingsFixture.h"

namespace wickfield_bundle {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

TEST_F(CheckingSettings, HasNothingToSayOfGoodOnes) {
    settings({{"removeBranding", "<true/>"}});
    EXPECT_THAT(rules(), IsEmpty());
}

TEST_F(CheckingSettings, CallsMissingOnesAnError) {
    const Findings all = findings();
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all.front().rule, "settings-missing");
    EXPECT_EQ(all.front().place, settingsPlace);
}

TEST_F(CheckingSettings, CallsUnreadableOnesAnError) {
    for (const char* text : {"", "not a list at all {", "<plist><array/></plist>", "<plist><dict><key>KZ"}) {
        write(settingsPlace, text);
        EXPECT_THAT(rules(), ElementsAre("settings-unreadable")) << text;
    }
}

TEST_F(CheckingSettings, SaysWhatIsThereInsteadOfADictionary) {
    write(settingsPlace, "<plist><array/></plist>");
    EXPECT_EQ(theReason(), "It cannot be read: it is an array instead of a dictionary.");
}

TEST_F(CheckingSettings, DoesNotReadHugeOnesOrPipes) {
    settings();
    std::filesystem::resize_file(bundle() + "/" + settingsPlace, std::uintmax_t{1} << 30U);
    EXPECT_THAT(rules(), ElementsAre("settings-unreadable"));
    std::filesystem::remove(bundle() + "/" + settingsPlace);
    ASSERT_EQ(::mkfifo((bundle() + "/" + settingsPlace).c_str(), 0644), 0);
    EXPECT_THAT(rules(), ElementsAre("settings-unreadable"));
}

TEST_F(CheckingSettings, NamesTheTextsThatAreMissing) {
    write(settingsPlace, "<plist><dict/></plist>");
    EXPECT_THAT(rules(), UnorderedElementsAre("setting-name-missing", "setting-missing", "setting-missing"));
}

TEST_F(CheckingSettings, WarnsOfANumberWhereTheWindowShowsAText) {
    settings({{"KZPluginVersion", "<real>1.10</real>"}});
    EXPECT_THAT(rules(), ElementsAre("setting-kind"));
    EXPECT_EQ(theReason(), "KZPluginVersion is a number; the window shows \"1.1\".");
}

TEST_F(CheckingSettings, WarnsOfEveryOtherKindThatIsShown) {
    for (const char* value : {"<integer>7</integer>", "<true/>", "<date>2026-11-21T01:15:00Z</date>",
                              "<data>AAAA</data>", "<array><string>a</string></array>", "<dict/>"}) {
        settings({{"KZPluginName", value}});
        EXPECT_THAT(rules(), ElementsAre("setting-kind")) << value;
    }
}

TEST_F(CheckingSettings, WarnsOfEmptyTexts) {
    settings({{"KZPluginAuthor", "<string> </string>"}, {"KZEULAPath", "<string></string>"}});
    EXPECT_THAT(rules(), ElementsAre("setting-empty", "setting-empty"));
}

TEST_F(CheckingSettings, WarnsOfLineBreaksAndOfTextsThatAreTooLong) {
    settings({{"KZPluginName", "<string>Echo\nof the Hills</string>"}});
    EXPECT_THAT(rules(), ElementsAre("setting-line-break"));
    settings({{"KZPluginName", "<string>" + std::string(61, 'x') + "</string>"}});
    EXPECT_THAT(rules(), ElementsAre("setting-text-long"));
    settings({{"KZPluginName", "<string>" + std::string(60, 'x') + "</string>"}});
    EXPECT_THAT(rules(), IsEmpty());
}

TEST_F(CheckingSettings, CallsAFileNameOfAnotherKindAnError) {
    settings({{"KZEULAPath", "<integer>1</integer>"}, {"KZBgImagePath", "<array/>"}});
    EXPECT_THAT(rules(), ElementsAre("setting-file-kind", "setting-file-kind"));
}

TEST_F(CheckingSettings, WarnsOfAFlagThatIsNeitherYesNorNo) {
    for (const char* value : {"<string>hidden</string>", "<string></string>", "<array/>", "<real>0.5</real>"}) {
        settings({{"removeBranding", value}});
        EXPECT_THAT(rules(), ElementsAre("setting-flag-kind")) << value;
    }
    for (const char* value : {"<string>YES</string>", "<integer>1</integer>", "<false/>"}) {
        settings({{"removeBranding", value}});
        EXPECT_THAT(rules(), IsEmpty()) << value;
    }
}

TEST_F(CheckingSettings, NotesAnUnknownOneAndWhatMayBeMeant) {
    settings({{"KZEulaPath", "<string>a</string>"}, {"Colour of the sky", "<string>blue</string>"}});
    const Findings all = findings();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0].rule, "setting-unknown");
    EXPECT_EQ(all[0].remedy, "Take it out.");
    EXPECT_EQ(all[1].remedy,
              "If it is meant to be KZEULAPath, call it so: \"agreement\" in wickfield.json, or --agreement.");
}

TEST_F(CheckingSettings, CallsAFileThatIsMissingAnError) {
    settings({{"KZEULAPath", "<string>Licence.rtf</string>"}, {"KZBgImagePath", "<string>Back.png</string>"}});
    EXPECT_THAT(rules(), ElementsAre("resource-missing", "resource-missing"));
}

TEST_F(CheckingSettings, FindsAFileThatIsWrittenWithOtherCapitals) {
    settings({{"KZEULAPath", "<string>licence.RTF</string>"}});
    write("Contents/Resources/Licence.rtf");
    const Findings all = findings();
    ASSERT_EQ(all.size(), 1U);
    EXPECT_EQ(all.front().rule, "resource-case");
    EXPECT_EQ(all.front().place, "Contents/Resources/Licence.rtf");
    EXPECT_EQ(all.front().reason, "KZEULAPath calls it \"licence.RTF\".");
}

TEST_F(CheckingSettings, CallsAFileOutsideOfTheResourcesAnError) {
    settings({{"KZEULAPath", "<string>../../../../../../../etc/hostname</string>"}});
    EXPECT_THAT(rules(), ElementsAre("resource-outside"));
}

TEST_F(CheckingSettings, SaysWhereAProjectHasThem) {
    settings({{"KZPluginName", ""}, {"KZPluginAuthor", "<string></string>"}, {"KZBgImagePath", "<string>B</string>"}});
    std::vector<std::string> remedies;
    for (const Finding& finding : findings()) {
        remedies.push_back(finding.remedy);
    }
    EXPECT_THAT(remedies, ElementsAre(HasSubstr("\"name\" in wickfield.json, or --name."),
                                      HasSubstr("\"author\" in wickfield.json, or --author."),
                                      HasSubstr("\"background\" in wickfield.json, or --background.")));
}

class CheckingLanguages : public CheckingSettings {
protected:
    CheckingLanguages() {
        settings({{"KZEULAPath", "<string>L.txt</string>"}});
        setLanguage("C");
    }
    ~CheckingLanguages() override {
        for (const auto& [name, value] : m_before) {
            value ? ::setenv(name, value->c_str(), 1) : ::unsetenv(name);
        }
    }
    CheckingLanguages(const CheckingLanguages&) = delete;
    CheckingLanguages& operator=(const CheckingLanguages&) = delete;

    void setLanguage(const char* language) {
        for (const auto& [name, value] : m_before) {
            ::unsetenv(name);
        }
        ::setenv("LANG", language, 1);
    }
    std::string localized(const std::string& language) const {
        return "Contents/Resources/" + language + ".lproj/L.txt";
    }
    std::vector<Found> found() {
        std::vector<Found> all;
        for (const Finding& finding : findings()) {
            all.push_back({finding.rule, finding.place});
        }
        return all;
    }

private:
    static std::optional<std::string> environment(const char* name) {
        const char* const value = std::getenv(name);
        return value == nullptr ? std::nullopt : std::optional<std::string>(value);
    }
    const std::map<const char*, std::optional<std::string>> m_before{{"LANG", environment("LANG")},
                                                                     {"LANGUAGE", environment("LANGUAGE")},
                                                                     {"LC_ALL", environment("LC_ALL")},
                                                                     {"LC_MESSAGES", environment("LC_MESSAGES")}};
};

TEST_F(CheckingLanguages, HasNothingToSayWhereEveryCustomerGetsOne) {
    for (const char* const language : {"en", "English", "Base"}) {
        write(localized("de"));
        write(localized(language));
        EXPECT_THAT(found(), IsEmpty()) << language;
        std::filesystem::remove_all(bundle() + "/Contents/Resources/" + language + ".lproj");
    }
}

TEST_F(CheckingLanguages, WarnsWhereSomeCustomersGetNone) {
    write(localized("fr"));
    write(localized("de"));
    EXPECT_THAT(found(), ElementsAre(Found{"resource-language-missing", localized("de")}));
    EXPECT_EQ(theReason(), "What KZEULAPath names is there for de, fr, but not for customers of other languages.");
}

TEST_F(CheckingLanguages, FindsTheSameWhateverTheLanguageOfWhoeverChecks) {
    write(localized("de"));
    write(localized("pt_BR"), "gr\xFC\xDF\n");
    const auto ofC = found();
    for (const char* const language : {"de_DE.UTF-8", "pt_BR.UTF-8", "ja_JP.UTF-8"}) {
        setLanguage(language);
        EXPECT_EQ(found(), ofC) << language;
    }
}

TEST_F(CheckingLanguages, LooksAtTheAgreementOfEveryLanguage) {
    write(localized("en"));
    write(localized("de"), "gr\xFC\xDF\n");
    write(localized("fr"), "%PDF-1.7\n");
    EXPECT_THAT(found(), UnorderedElementsAre(Found{"agreement-encoding", localized("de")},
                                              Found{"agreement-kind", localized("fr")}));
}

TEST_F(CheckingLanguages, HasEachReadAsTheWindowDoes) {
    helper(R"(case $2 in */de.lproj/*) echo '{"ok":false,"reason":"it is torn"}' ;; )"
           R"(*) echo '{"ok":true,"characters":9,"pictures":0,"complete":true}' ;; esac)");
    for (const char* const language : {"cs", "da", "de", "en", "es", "fi", "fr", "it", "nl"}) {
        write(localized(language));
    }
    EXPECT_THAT(found(), ElementsAre(Found{"agreement-unreadable", localized("de")}));
}

TEST_F(CheckingLanguages, WarnsOfWhatTheOneForAllHides) {
    write("Contents/Resources/L.txt");
    write(localized("de"), "gr\xFC\xDF\n");
    EXPECT_THAT(found(), ElementsAre(Found{"resource-language-hidden", localized("de")}));
}

TEST_F(CheckingLanguages, FindsWhatTheInstallerFinds) {
    write(localized("de"));
    write(localized("en"));
    for (const char* const language : {"C", "de_AT.UTF-8", "en_GB.UTF-8", "ja_JP.UTF-8"}) {
        setLanguage(language);
        const platform::Host present = platform::linux_host::services();
        platform::linux_host::LinuxMainBundle resources(*present.propertyLists, bundle() + "/Contents/MacOS/-");
        platform::Host host = present;
        host.bundle = &resources;
        const platform::ScopedHost scope(host);
        const auto shown = InstallerSettings::load(bundle() + "/" + settingsPlace).agreement();
        ASSERT_TRUE(shown) << language;
        EXPECT_THAT(findInEveryLanguage("L.txt").paths, Contains(*shown)) << language;
    }
}

TEST_F(CheckingLanguages, LooksAtBackgroundsToo) {
    settings({{"KZBgImagePath", "<string>B.png</string>"}});
    write("Contents/Resources/de.lproj/B.png", "\x89PNG");
    EXPECT_THAT(found(), ElementsAre(Found{"resource-language-missing", "Contents/Resources/de.lproj/B.png"}));
}

TEST_F(CheckingLanguages, LooksAtSoManyLanguagesAndNoMore) {
    write(localized("en"));
    for (int number = 0; number < 70; ++number) {
        write(localized("x" + std::to_string(100 + number)));
    }
    EXPECT_THAT(found(), ElementsAre(Found{"not-checked", localized("x163")}));
}

class CheckingRightsOfParts : public CheckingSettings {
protected:
    void restrict(const std::string& place, unsigned mode) {
        ASSERT_EQ(::chmod((bundle() + "/" + place).c_str(), mode), 0) << place;
    }
    void expectPrivate(const std::string& place, const std::string& without) {
        const Findings all = findings();
        ASSERT_EQ(all.size(), 1U) << place;
        EXPECT_EQ(all.front().rule, "mode-part-private");
        EXPECT_EQ(all.front().place, place);
        EXPECT_THAT(all.front().reason, HasSubstr(without));
    }
};

TEST_F(CheckingRightsOfParts, WarnsOfSettingsThatOthersMayNotRead) {
    settings();
    restrict(settingsPlace, 0600);
    expectPrivate(settingsPlace, "the window shows \"(null)\", and no agreement is asked for");
}

TEST_F(CheckingRightsOfParts, WarnsOfAnAgreementThatOthersMayNotRead) {
    agreement("L.txt", "text\n");
    restrict("Contents/Resources/L.txt", 0600);
    expectPrivate("Contents/Resources/L.txt", "the text that is to be agreed to is empty");
}

TEST_F(CheckingRightsOfParts, WarnsOfTheTextInAFolder) {
    settings({{"KZEULAPath", "<string>L.rtfd</string>"}});
    write("Contents/Resources/L.rtfd/TXT.rtf", "{\\rtf1 text}", 0600);
    expectPrivate("Contents/Resources/L.rtfd/TXT.rtf", "the text that is to be agreed to is empty");
}

TEST_F(CheckingRightsOfParts, WarnsOfALanguageThatOthersMayNotEnter) {
    settings({{"KZEULAPath", "<string>L.txt</string>"}});
    write("Contents/Resources/en.lproj/L.txt");
    folder("Contents/Resources/en.lproj", 0700);
    expectPrivate("Contents/Resources/en.lproj", "no agreement is asked for");
}

TEST_F(CheckingRightsOfParts, WarnsOfABackgroundThatOthersMayNotRead) {
    background("\x89PNG\r\n");
    restrict("Contents/Resources/Back.png", 0640);
    expectPrivate("Contents/Resources/Back.png", "the window has no picture");
}

TEST_F(CheckingRightsOfParts, CallsWhatItsOwnerMayNotReadAnError) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "only the superuser reads them all the same, and so has nothing else to say";
    }
    settings();
    restrict(settingsPlace, 0200);
    EXPECT_THAT(rules(), ElementsAre("mode-part-unreadable"));
}

}  // namespace
}  // namespace wickfield_bundle
