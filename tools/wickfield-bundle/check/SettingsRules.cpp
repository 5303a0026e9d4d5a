#include "tools/wickfield-bundle/check/SettingsRules.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "lib/base/PathText.h"
#include "lib/base/PropertyText.h"
#include "lib/base/Text.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/check/AgreementRules.h"
#include "tools/wickfield-bundle/check/BackgroundRules.h"
#include "tools/wickfield-bundle/check/NamedResource.h"
#include "tools/wickfield-bundle/check/PartRights.h"
#include "tools/wickfield-bundle/check/ProjectKeys.h"
#include "tools/wickfield-bundle/check/RegularFile.h"
#include "tools/wickfield-bundle/check/Rules.h"
#include "tools/wickfield-bundle/project/NearestName.h"

namespace wickfield_bundle {

namespace {

using platform::PropertyDictionary;
using platform::PropertyValue;

constexpr std::size_t mostSettings = std::size_t{1} << 20U;  // bytes; real ones have a few hundred
constexpr std::size_t longestQuotation = 80;                 // bytes of a value in a reason
constexpr std::size_t readAtOnce = 4;                        // agreements, or backgrounds, each by a helper of its own
constexpr std::size_t mostLanguages = 64;                    // that are looked at

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
    void report(RuleName rule, std::string_view key, std::string reason) {
        add(m_findings, rule, m_place, std::move(reason), remedyInProject(rule, key));
    }

    void checkMissing(const std::string& key) {
        const std::string reason = key + " is missing.";
        if (key == InstallerSettings::nameKey) {
            add(m_findings, "setting-name-missing", m_place, reason);
        } else {
            add(m_findings, "setting-missing", m_place, reason, "Give it: " + inProject(key) + ".");
        }
    }

    void checkShown(const ShownText& shown) {
        const std::string key = shown.key;
        const PropertyValue* value = find(m_values, shown.key);
        if (value == nullptr) {
            checkMissing(key);
            return;
        }
        const auto* text = value->as<std::string>();
        if (text == nullptr) {
            report("setting-kind", key,
                   key + " is " + kindOf(*value) + "; the window shows " + quoted(kz::description(*value)) + ".");
        } else if (isBlank(*text)) {
            report("setting-empty", key, key + " is empty.");
        } else {
            checkText(key, *text, shown.longest);
        }
    }

    void checkText(const std::string& key, const std::string& text, std::size_t longest) {
        const auto isControl = [](char c) { return (c >= 0 && c < ' ') || c == 0x7F; };
        if (std::ranges::any_of(text, isControl)) {
            report("setting-line-break", key, key + " has a line break or a control character.");
        }
        if (const std::size_t length = kz::lengthInUTF16(text); length > longest) {
            report("setting-text-long", key,
                   key + " has " + std::to_string(length) + " characters; there is room for about " +
                       std::to_string(longest) + ".");
        }
    }

    void checkFileName(const std::string& key) {
        const PropertyValue* value = find(m_values, key.c_str());
        const auto* text = value == nullptr ? nullptr : value->as<std::string>();
        if (value != nullptr && text == nullptr) {
            report("setting-file-kind", key, key + " is " + kindOf(*value) + ".");
        } else if (text != nullptr && text->empty()) {
            report("setting-empty", key, key + " is empty; no file is looked for.");
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
            report("setting-flag-kind", InstallerSettings::removesBrandingKey,
                   std::string(InstallerSettings::removesBrandingKey) + " is " +
                       (text == nullptr ? kindOf(*value) : quoted(*text)) + ", which counts as " +
                       (kz::boolValue(*value) ? "yes." : "no."));
        }
    }

    void checkKnown(const std::string& key) {
        if (std::ranges::find(knownKeys, key) != knownKeys.end()) {
            return;
        }
        const auto meant = nearestName(key, knownKeys);
        add(m_findings, "setting-unknown", m_place, "The installer does not know " + quoted(key) + ".",
            meant ? "If it is meant to be " + *meant + ", call it so: " + inProject(*meant) + "." : "");
    }

    const PropertyDictionary& m_values;
    const std::string m_place;
    Findings& m_findings;
};

// A text with pictures is a folder; one language's files lie in a folder, too.
void checkRightsOfNamed(const CheckedBundle& bundle, const std::string& place, Media media, Findings& findings) {
    const bool isAgreement = media == Media::agreement;
    const std::string without = isAgreement ? "the text that is to be agreed to is empty" : "the window has no picture";
    checkPartRights(bundle, place, without, findings);
    if (isAgreement) {
        checkPartRights(bundle, place + "/TXT.rtf", without, findings);
    }
    const std::string folder = kz::deletingLastPathComponent(place);
    if (folder + "/" != bundle.resourcesPrefix) {
        checkPartRights(bundle, folder, isAgreement ? "no agreement is asked for" : without, findings);
    }
}

}  // namespace

SettingsCheck::SettingsCheck(const std::string& mediaHelper)
    : m_mediaHelper(mediaHelper), m_path(InstallerSettings::locate()) {
    read();
    if (!m_values) {
        return;
    }
    for (NamedFile* const named : {&m_agreement, &m_background}) {
        const PropertyValue* const value = find(*m_values, named->key);
        if (const auto* const name = value == nullptr ? nullptr : value->as<std::string>()) {
            named->file = findInEveryLanguage(*name);
        }
        begin(*named, readAtOnce);
    }
}

void SettingsCheck::begin(NamedFile& named, std::size_t upTo) {
    const auto& paths = named.file.paths;
    while (named.readings.size() < std::min({upTo, paths.size(), mostLanguages})) {
        const std::string& path = paths[named.readings.size()];
        named.readings.push_back(std::make_unique<MediaCheck>(m_mediaHelper, named.media, path));
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
    checkPartRights(bundle, place, "the window shows \"(null)\", and no agreement is asked for", findings);
    if (!m_values) {
        add(findings, "settings-unreadable", place, "It cannot be read: " + m_whyUnreadable + ".");
        return;
    }
    KeyRules(*m_values, place, findings).run();
    finish(m_agreement, bundle, findings);
    finish(m_background, bundle, findings);
}

void SettingsCheck::finish(NamedFile& named, const CheckedBundle& bundle, Findings& findings) {
    const auto& paths = named.file.paths;
    const auto found = paths.empty() ? std::nullopt : std::optional(paths.front());
    if (!checkNamedResource(bundle, placeOf(bundle, *m_path), *m_values, named.key, found, findings)) {
        return;
    }
    checkLanguages(bundle, named.key, named.file, findings);
    for (std::size_t index = 0; index < std::min(paths.size(), mostLanguages); ++index) {
        begin(named, index + readAtOnce);
        const MediaReport report = named.readings[index]->finish();
        named.readings[index].reset();
        const std::string place = placeOf(bundle, paths[index]);
        checkRightsOfNamed(bundle, place, named.media, findings);
        if (named.media == Media::agreement) {
            checkAgreement(paths[index], place, report, findings);
        } else {
            checkBackground(paths[index], place, report, findings);
        }
    }
    if (paths.size() > mostLanguages) {
        add(findings, "not-checked", placeOf(bundle, paths[mostLanguages]),
            "Only the first " + std::to_string(mostLanguages) + " languages were looked at.");
    }
}

}  // namespace wickfield_bundle
