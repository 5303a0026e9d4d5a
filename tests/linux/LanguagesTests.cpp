#include "platform/linux/services/Languages.h"

#include <gtest/gtest.h>

#include "tests/fakes/ScopedEnvironment.h"

namespace {

using Names = std::vector<std::string>;

struct Locale {
    std::optional<std::string> language = std::nullopt;
    std::optional<std::string> all = std::nullopt;
    std::optional<std::string> messages = std::nullopt;
    std::optional<std::string> lang = std::nullopt;
};

Names localizations(const Locale& locale) {
    const fakes::ScopedEnvironment language("LANGUAGE", locale.language);
    const fakes::ScopedEnvironment all("LC_ALL", locale.all);
    const fakes::ScopedEnvironment messages("LC_MESSAGES", locale.messages);
    const fakes::ScopedEnvironment lang("LANG", locale.lang);
    return platform::linux_host::preferredLocalizations();
}

TEST(Languages, OfNoLocaleAreEnglish) { EXPECT_EQ(localizations({}), (Names{"en", "English", "Base"})); }

TEST(Languages, OfALocaleAreTheRegionalOneThenTheLanguage) {
    EXPECT_EQ(localizations({.lang = "de_DE.UTF-8"}), (Names{"de_DE", "de-DE", "de", "en", "English", "Base"}));
    EXPECT_EQ(localizations({.lang = "sr_RS@latin"}), (Names{"sr_RS", "sr-RS", "sr", "en", "English", "Base"}));
    EXPECT_EQ(localizations({.lang = "fr"}), (Names{"fr", "en", "English", "Base"}));
}

TEST(Languages, ComeFromTheFirstVariableThatIsSet) {
    EXPECT_EQ(localizations({.all = "fr", .messages = "de", .lang = "it"}).front(), "fr");
    EXPECT_EQ(localizations({.messages = "de", .lang = "it"}).front(), "de");
    EXPECT_EQ(localizations({.all = "", .messages = "", .lang = "it"}).front(), "it");
}

TEST(Languages, OfTheListComeFirst) {
    EXPECT_EQ(localizations({.language = "pt_BR:es::pt_BR", .lang = "de_DE.UTF-8"}),
              (Names{"pt_BR", "pt-BR", "pt", "es", "de_DE", "de-DE", "de", "en", "English", "Base"}));
}

TEST(Languages, OfThePlainLocaleAreEnglishWhateverTheListSays) {
    for (const char* plain : {"C", "C.UTF-8", "POSIX"}) {
        EXPECT_EQ(localizations({.language = "de", .lang = plain}), (Names{"en", "English", "Base"})) << plain;
    }
}

TEST(Languages, AreNeverPaths) {
    EXPECT_EQ(localizations({.lang = "../../etc"}), (Names{"en", "English", "Base"}));
    EXPECT_EQ(localizations({.lang = "de/x"}), (Names{"en", "English", "Base"}));
}

TEST(Languages, AreNamedOnce) {
    EXPECT_EQ(localizations({.lang = "en_GB"}), (Names{"en_GB", "en-GB", "en", "English", "Base"}));
}

}  // namespace
