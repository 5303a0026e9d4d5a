// The scripts that run before and after an installation, and what only looks like one. None is ever run here.
#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/InstallationScripts.h"
#include "lib/base/PathText.h"
#include "lib/base/Text.h"
#include "platform/ports/Host.h"
#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/PartRights.h"
#include "tools/wickfield-bundle/check/RegularFile.h"
#include "tools/wickfield-bundle/check/Rules.h"
#include "tools/wickfield-bundle/check/ShellScriptCheck.h"

namespace wickfield_bundle {

namespace {

using platform::FileType;

constexpr std::array<const char*, 2> scriptNames{InstallationScripts::before, InstallationScripts::after};

std::string inLowerCase(std::string_view text) {
    std::string lower(text);
    std::ranges::transform(lower, lower.begin(),
                           [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
    return lower;
}

bool isScriptName(std::string_view name) {
    return std::ranges::any_of(scriptNames, [&](const char* script) {
        return std::ranges::any_of(InstallationScripts::interpreters(), [&](const auto& interpreter) {
            return name == std::string(script) + "." + interpreter.extension;
        });
    });
}

// "pre-install", "Post_Install.py", but no text or picture that a script may use.
bool looksLikeScript(std::string_view name) {
    constexpr std::array<std::string_view, 19> languages{
        "",   "sh", "bash", "zsh", "ksh", "csh",         "fish", "command", "tool", "py",
        "rb", "pl", "php",  "js",  "lua", "applescript", "scpt", "scptd",   "swift"};
    std::string stem = inLowerCase(kz::deletingPathExtension(name));
    std::erase_if(stem, [](char c) { return c == '-' || c == '_' || c == ' ' || c == '.'; });
    return std::ranges::find(scriptNames, stem) != scriptNames.end() &&
           std::ranges::find(languages, inLowerCase(kz::pathExtension(name))) != languages.end();
}

void checkLookAlike(const CheckedBundle& bundle, const InventoryEntry& entry, Findings& findings) {
    const std::string_view name = entry.name();
    const bool isAmongResources = bundle.resourcesPrefix.size() + name.size() == entry.path.size();
    if (isAmongResources && isScriptName(name)) {
        return;
    }
    const std::string lower = inLowerCase(name);
    if (isAmongResources && isScriptName(lower)) {
        add(findings, "script-name-case", entry.path, "The installer looks for \"" + lower + "\".");
    } else if (isScriptName(name)) {
        add(findings, "script-never-run", entry.path, "The installer looks for it directly in Contents/Resources.");
    } else if (looksLikeScript(name) || (lower.ends_with(".txt") && isScriptName(kz::deletingPathExtension(lower)))) {
        add(findings, "script-never-run", entry.path,
            "The installer knows only the names preinstall and postinstall with .scpt, .swift or .sh.");
    }
}

void checkText(const CheckedBundle& bundle, const std::string& place, std::string_view extension, Findings& findings) {
    const std::string path = bundle.fullPath(place);
    std::string whyNot;
    const auto file = RegularFile::open(path, whyNot);
    if (!file) {
        add(findings, "script-not-a-file", place, "It cannot be opened: " + whyNot + ".");
        return;
    }
    if (file->size() == 0) {
        add(findings, "script-empty", place, "It is empty.");
        return;
    }
    if (extension == "scpt") {
        add(findings, "script-one-host", place, "It is run by /usr/bin/osascript, which only a Mac has.");
    } else if (extension == "swift") {
        add(findings, "script-swift", place,
            "It is run by /usr/bin/swift, which comes with the developer's tools alone.");
    } else {
        checkShellScript(path, *file,
                         [&](RuleName rule, std::string reason) { add(findings, rule, place, std::move(reason)); });
    }
}

void checkScript(const CheckedBundle& bundle, const char* name, const std::string& without, Findings& findings) {
    std::optional<std::string> running;
    for (const auto& interpreter : InstallationScripts::interpreters()) {
        const std::string place = bundle.resourcesPrefix + name + "." + interpreter.extension;
        if (!platform::host().files->fileExists(bundle.fullPath(place))) {
            continue;
        }
        if (running) {
            add(findings, "script-hidden", place,
                "The installer runs " + kz::lastPathComponent(*running) + " instead.");
        } else {
            running = place;
            checkText(bundle, place, interpreter.extension, findings);
            checkPartRights(bundle, place, without, findings);
        }
    }
}

}  // namespace

void checkScripts(const CheckedBundle& bundle, Findings& findings) {
    checkScript(bundle, InstallationScripts::before, "the installation fails before it has begun", findings);
    checkScript(bundle, InstallationScripts::after, "the installation fails once its files are in place", findings);
    for (const InventoryEntry& entry : bundle.contents.entries) {
        if (entry.type != FileType::folder && entry.path.starts_with(bundle.resourcesPrefix) &&
            !bundle.isInTree(entry.path)) {
            checkLookAlike(bundle, entry, findings);
        }
    }
}

}  // namespace wickfield_bundle
