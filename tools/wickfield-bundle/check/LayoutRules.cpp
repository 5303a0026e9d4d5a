#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

using platform::FileType;

constexpr std::uint64_t mostInformation = std::uint64_t{1} << 20U;  // bytes; real ones have a few thousand
constexpr const char* informationPlace = "Contents/Info.plist";

bool isProgramIn(const InventoryEntry& entry, std::string_view folder) {
    return entry.type != FileType::folder && liesWithin(entry.path, folder) &&
           entry.path.find('/', folder.size() + 1) == std::string::npos;
}

bool hasProgramIn(const CheckedBundle& bundle, std::string_view folder) {
    return std::ranges::any_of(bundle.contents.entries,
                               [&](const InventoryEntry& entry) { return isProgramIn(entry, folder); });
}

std::optional<platform::PropertyDictionary> readInformation(const CheckedBundle& bundle, Findings& findings) {
    const InventoryEntry* const entry = bundle.contents.find(informationPlace);
    if (entry == nullptr) {
        add(findings, "info-missing", informationPlace, "There is nothing of this name.");
        return std::nullopt;
    }
    std::optional<std::string> bytes;
    if (entry->type == FileType::regular && entry->size > 0 && entry->size <= mostInformation) {
        bytes = platform::host().files->readFile(bundle.fullPath(informationPlace), mostInformation);
    }
    if (!bytes) {
        add(findings, "info-unreadable", informationPlace,
            entry->type != FileType::regular ? "It is not a file."
            : entry->size == 0               ? "It is empty."
            : entry->size > mostInformation  ? "It has " + std::to_string(entry->size) + " bytes; it was not read."
                                             : "It cannot be read.");
        return std::nullopt;
    }
    auto parsed = platform::host().propertyLists->parse(*bytes);
    if (const auto* const error = std::get_if<platform::Error>(&parsed)) {
        add(findings, "info-unreadable", informationPlace, "It is not a property list: " + error->description + ".");
        return std::nullopt;
    }
    auto* const dictionary =
        std::get_if<platform::PropertyDictionary>(&std::get<platform::PropertyValue>(parsed).value);
    if (dictionary == nullptr) {
        add(findings, "info-unreadable", informationPlace, "It holds something else than a dictionary.");
        return std::nullopt;
    }
    return std::move(*dictionary);
}

// "" when there is none, or it is no text.
std::string textOf(const platform::PropertyDictionary& information, const std::string& key) {
    const auto found = information.find(key);
    const auto* const text = found == information.end() ? nullptr : found->second.as<std::string>();
    return text == nullptr ? "" : *text;
}

void checkIdentity(const platform::PropertyDictionary& information, Findings& findings) {
    const std::string identifier = textOf(information, "CFBundleIdentifier");
    const auto isUsual = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '.';
    };
    if (identifier.empty()) {
        add(findings, "info-identifier", informationPlace, "CFBundleIdentifier is missing, empty or no text.");
    } else if (!std::ranges::all_of(identifier, isUsual)) {
        add(findings, "info-identifier-characters", informationPlace, "CFBundleIdentifier is \"" + identifier + "\".");
    }
    if (const std::string kind = textOf(information, "CFBundlePackageType"); kind != "APPL") {
        add(findings, "info-kind", informationPlace,
            kind.empty() ? "CFBundlePackageType is missing or no text." : "CFBundlePackageType is \"" + kind + "\".");
    }
}

void checkProgram(const CheckedBundle& bundle, const std::string& folder, const std::string& name, Findings& findings) {
    const std::string place = folder + "/" + name;
    const InventoryEntry* const entry = name.empty() ? nullptr : bundle.contents.find(place);
    if (name.empty()) {
        add(findings, "info-executable", informationPlace, "CFBundleExecutable is missing, empty or no text.");
    } else if (entry == nullptr || !isProgramIn(*entry, folder)) {
        add(findings, "info-executable", informationPlace,
            "CFBundleExecutable is \"" + name + "\", and no such file lies in " + folder + ".");
    } else if (entry->type == FileType::regular && (entry->permissions & 0111U) != 0111U) {
        add(findings, "program-not-executable", place, "Not everybody has the right to execute it.");
    }
}

}  // namespace

void checkLayout(const CheckedBundle& bundle, Findings& findings) {
    const std::string forMac = "Contents/MacOS";
    const std::string forLinux = "Contents/Linux";
    const bool hasMac = hasProgramIn(bundle, forMac);
    const bool hasLinux = hasProgramIn(bundle, forLinux);
    if (!hasMac && !hasLinux) {
        add(findings, "program-missing", "Contents", "Neither folder has a file in it.");
    } else if (!hasMac) {
        add(findings, "program-mac-missing", forMac, "No file lies in this folder.");
    } else if (!hasLinux) {
        add(findings, "program-linux-missing", forLinux, "No file lies in this folder.");
    }
    const auto information = readInformation(bundle, findings);
    if (!information) {
        return;
    }
    checkIdentity(*information, findings);
    const std::string name = textOf(*information, "CFBundleExecutable");
    if (hasMac) {
        checkProgram(bundle, forMac, name, findings);
    }
    if (hasLinux) {
        checkProgram(bundle, forLinux, name, findings);
    }
}

}  // namespace wickfield_bundle
