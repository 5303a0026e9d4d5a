#include "tools/wickfield-bundle/check/SettingsRules.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "lib/base/PropertyText.h"
#include "lib/base/Text.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/check/AgreementRules.h"
#include "tools/wickfield-bundle/check/BackgroundRules.h"
#include "tools/wickfield-bundle/check/NamedResource.h"
#include "tools/wickfield-bundle/check/RegularFile.h"
#include "tools/wickfield-bundle/check/Rules.h"
#include "tools/wickfield-bundle/project/NearestName.h"

namespace wickfield_bundle {

namespace {

using platform::PropertyDictionary;
using platform::PropertyValue;

constexpr std::size_t mostSettings = std::size_t{1} << 20U;  // bytes; real ones have a few hundred
constexpr std::size_t longestQuotation = 80;                 // bytes of a value in a reason

constexpr std::array<std::string_view, 6> knownKeys{
    InstallerSettings::nameKey,       InstallerSettings::versionKey,   InstallerSettings::authorKey,
    InstallerSettings::backgroundKey, InstallerSettings::agreementKey, InstallerSettings::removesBrandingKey};

struct ShownText {
    const char* key;
    std::size_t longest;  // UTF-16 units that the window has room for, about
};
constexpr std::array<ShownText, 3> shownTexts{
    {{InstallerSettings::nameKey, 60}, {InstallerSettings::versionKey, 40}, {InstallerSettings::authorKey, 80}}};

std::string quoted(std::string_view text) {
    return '"' + std::string(text.substr(0, longestQuotation)) + (text.size() > longestQuotation ? "...\"" : "\"");
}

bool isBlank(std::string_view text) { return kz::trimWhitespaceAndNewlines(text).empty(); }

std::string kindOf(const PropertyValue& value) {
    constexpr std::array<const char*, 8> names{"text",   "a number", "a number", "true or false",
                                               "a date", "data",     "an array", "a dictionary"};
    return names.at(value.value.index());
}

const PropertyValue* find(const PropertyDictionary& values, const char* key) {
    const auto found = values.find(key);
    return found == values.end() ? nullptr : &found->second;
}

class KeyRules {
public:
    KeyRules(const PropertyDictionary& values, std::string place, Findings& findings)
        : m_values(values), m_place(std::move(place)), m_findings(findings) {}

    void run() {
        for (const ShownText& shown : shownTexts) {
            checkShown(shown);
        }
        for (const char* key : {InstallerSettings::backgroundKey, InstallerSettings::agreementKey}) {
            checkFileName(key);
        }
        checkFlag();
        for (const auto& [key, value] : m_values) {
            checkKnown(key);
        }
    }

private:
    void report(RuleName rule, std::string reason, std::string remedy = {}) {
        add(m_findings, rule, m_place, std::move(reason), std::move(remedy));
    }

    void checkShown(const ShownText& shown) {
        const std::string key = shown.key;
        const PropertyValue* value = find(m_values, shown.key);
        if (value == nullptr) {
            report(key == InstallerSettings::nameKey ? RuleName("setting-name-missing") : RuleName("setting-missing"),
                   key + " is missing.");
            return;
        }
        const auto* text = value->as<std::string>();
        if (text == nullptr) {
            report("setting-kind",
                   key + " is " + kindOf(*value) + "; the window shows " + quoted(kz::description(*value)) + ".");
        } else if (isBlank(*text)) {
            report("setting-empty", key + " is empty.");
        } else {
            checkText(key, *text, shown.longest);
        }
    }

    void checkText(const std::string& key, const std::string& text, std::size_t longest) {
        const auto isControl = [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; };
        if (std::ranges::any_of(text, isControl)) {
            report("setting-line-break", key + " has a line break or a control character.");
        }
        if (const std::size_t length = kz::lengthInUTF16(text); length > longest) {
            report("setting-text-long", key + " has " + std::to_string(length) +
                                            " characters; there is room for about " + std::to_string(longest) + ".");
        }
    }

    void checkFileName(const std::string& key) {
        const PropertyValue* value = find(m_values, key.c_str());
        const auto* text = value == nullptr ? nullptr : value->as<std::string>();
        if (value != nullptr && text == nullptr) {
            report("setting-file-kind", key + " is " + kindOf(*value) + ".");
        } else if (text != nullptr && text->empty()) {
            report("setting-empty", key + " is empty; no file is looked for.");
        }
    }

    // A number says yes or no as well; so do some words.
    void checkFlag() {
        constexpr std::array<std::string_view, 8> words{"yes", "no", "true", "false", "1", "0", "y", "n"};
        const PropertyValue* value = find(m_values, InstallerSettings::removesBrandingKey);
        if (value == nullptr || value->as<bool>() != nullptr || value->as<std::int64_t>() != nullptr) {
            return;
        }
        const auto* text = value->as<std::string>();
        if (text == nullptr || std::ranges::find(words, kz::lowercased(*text)) == words.end()) {
            report("setting-flag-kind", std::string(InstallerSettings::removesBrandingKey) + " is " +
                                            (text == nullptr ? kindOf(*value) : quoted(*text)) + ", which counts as " +
                                            (kz::boolValue(*value) ? "yes." : "no."));
        }
    }

    void checkKnown(const std::string& key) {
        if (std::ranges::find(knownKeys, key) != knownKeys.end()) {
            return;
        }
        const auto meant = nearestName(key, knownKeys);
        report("setting-unknown", "The installer does not know " + quoted(key) + ".",
               meant ? "If it is meant to be " + *meant + ", call it so." : "");
    }

    const PropertyDictionary& m_values;
    const std::string m_place;
    Findings& m_findings;
};

}  // namespace

SettingsCheck::SettingsCheck(const std::string& mediaHelper) : m_path(InstallerSettings::locate()) {
    read();
    if (!m_values) {
        return;
    }
    const InstallerSettings settings(*m_values);
    m_agreement = settings.agreement();
    m_background = settings.backgroundImage();
    if (m_agreement) {
        m_agreementCheck = std::make_unique<MediaCheck>(mediaHelper, Media::agreement, *m_agreement);
    }
    if (m_background) {
        m_backgroundCheck = std::make_unique<MediaCheck>(mediaHelper, Media::image, *m_background);
    }
}

void SettingsCheck::read() {
    if (!m_path) {
        return;
    }
    const auto file = RegularFile::open(*m_path, m_whyUnreadable);
    if (!file) {
        return;
    }
    if (file->size() > mostSettings) {
        m_whyUnreadable = "it has more than 1 MiB, and was not looked at";
        return;
    }
    const auto parsed = platform::host().propertyLists->parse(file->head(mostSettings));
    const auto* root = std::get_if<PropertyValue>(&parsed);
    if (root == nullptr) {
        m_whyUnreadable = std::get<platform::Error>(parsed).description;
    } else if (const auto* values = root->as<PropertyDictionary>()) {
        m_values = *values;
    } else {
        m_whyUnreadable = "it is " + kindOf(*root) + " instead of a dictionary";
    }
}

void SettingsCheck::finish(const CheckedBundle& bundle, Findings& findings) {
    if (!m_path) {
        add(findings, "settings-missing",
            bundle.resourcesPrefix + InstallerSettings::fileName + "." + InstallerSettings::fileType,
            "There is no file of this name.");
        return;
    }
    const std::string place = placeOf(bundle, *m_path);
    if (!m_values) {
        add(findings, "settings-unreadable", place, "It cannot be read: " + m_whyUnreadable + ".");
        return;
    }
    KeyRules(*m_values, place, findings).run();
    if (checkNamedResource(bundle, place, *m_values, InstallerSettings::agreementKey, m_agreement, findings)) {
        checkAgreement(*m_agreement, placeOf(bundle, *m_agreement), m_agreementCheck->finish(), findings);
    }
    if (checkNamedResource(bundle, place, *m_values, InstallerSettings::backgroundKey, m_background, findings)) {
        checkBackground(*m_background, placeOf(bundle, *m_background), m_backgroundCheck->finish(), findings);
    }
}

}  // namespace wickfield_bundle
