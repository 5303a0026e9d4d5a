#include "lib/KZFileManager/Names.h"

#include <algorithm>
#include <utility>

#include "lib/base/Format.h"
#include "lib/base/PathText.h"
#include "lib/base/Text.h"
#include "platform/ports/Host.h"

namespace {

using platform::FileType;

// Bytes of the character that begins the text, which is not empty.
std::size_t characterLength(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    const std::size_t length = lead < 0xC2 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 1;
    if (length > text.size()) {
        return 1;
    }
    const bool whole = std::all_of(text.begin() + 1, text.begin() + static_cast<std::ptrdiff_t>(length),
                                   [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; });
    return whole ? length : 1;
}

// How many bytes of the name the pattern's first element, which is no "*", takes, and of the pattern; {0, 0}: no match.
std::pair<std::size_t, std::size_t> matchOne(std::string_view name, std::string_view pattern) {
    if (pattern.front() == '?') {
        return {characterLength(name), 1};
    }
    const std::size_t escape = pattern.front() == '\\' && pattern.size() > 1 ? 1 : 0;
    return name.front() == pattern[escape] ? std::pair<std::size_t, std::size_t>{1, escape + 1} : std::pair{0UL, 0UL};
}

// The rest of the name from the first place on where the pattern may match: the first byte that both begin with, if the
// pattern's first element is one that begins a character and stands for itself.
std::string_view fromFirst(std::string_view name, std::string_view pattern) {
    const char first = pattern.front();
    const bool standsForItself = first != '?' && first != '*' && first != '\\';
    const bool beginsCharacter = (static_cast<unsigned char>(first) & 0xC0U) != 0x80U;
    return standsForItself && beginsCharacter ? name.substr(std::min(name.find(first), name.size())) : name;
}

bool hasStar(std::string_view text) { return text.find('*') != std::string_view::npos; }

void addMatches(const std::string& folder, const std::string& component, std::vector<std::string>& matches) {
    auto& files = *platform::host().files;
    const std::size_t before = matches.size();
    std::string inFolder = kz::appendPathComponent(folder, "");
    if (!inFolder.ends_with('/')) {
        inFolder += '/';
    }
    const bool listed = files.visitDirectory(folder, platform::VisitSizes::no, [&](const auto& entry) {
        if (!KZFileManager::isLike(entry.name, component)) {
            return;
        }
        std::string path;
        path.reserve(inFolder.size() + entry.name.size());
        path.append(inFolder).append(entry.name);
        const bool listedAsItself = entry.type != FileType::unknown && entry.type != FileType::symbolicLink;
        if (listedAsItself || files.fileExists(path)) {
            matches.push_back(std::move(path));
        }
    });
    if (!listed) {
        matches.resize(before);
    }
}

}  // namespace

namespace KZFileManager {

bool isLike(std::string_view name, std::string_view pattern) {
    // After a mismatch only the latest "*" is made to take one character more: what matched before it needs no second
    // look, so the time is at most the product of the two lengths.
    std::optional<std::string_view> starPattern;
    std::string_view starName;
    while (!name.empty() || !pattern.empty()) {
        if (pattern.starts_with('*')) {
            pattern.remove_prefix(1);
            if (pattern.empty()) {
                return true;
            }
            starPattern = pattern;
            starName = name = fromFirst(name, pattern);
            continue;
        }
        if (!name.empty() && !pattern.empty()) {
            if (const auto [ofName, ofPattern] = matchOne(name, pattern); ofName != 0) {
                name.remove_prefix(ofName);
                pattern.remove_prefix(ofPattern);
                continue;
            }
        }
        if (!starPattern || name.empty()) {
            return false;
        }
        starName.remove_prefix(characterLength(starName));
        starName = name = fromFirst(starName, *starPattern);
        pattern = *starPattern;
    }
    return true;
}

std::vector<std::string> filesMatchingWildcardPath(const std::string& pattern) {
    return filesMatchingWildcardPath(pattern, std::nullopt);
}

std::vector<std::string> filesMatchingWildcardPath(const std::string& pattern,
                                                   const std::optional<std::string>& fromBasePath) {
    return filesMatchingWildcardPath(pattern, fromBasePath, SearchSubdirs::no);
}

std::vector<std::string> filesMatchingWildcardPath(const std::string& pattern,
                                                   const std::optional<std::string>& fromBasePath,
                                                   SearchSubdirs /*searchSubdirs*/) {
    if (!hasStar(pattern)) {
        return {fromBasePath ? kz::appendPathComponent(*fromBasePath, pattern) : pattern};
    }
    const std::string base = fromBasePath.value_or("/");
    std::vector<std::string> current{base};
    for (const auto& component : kz::pathComponents(pattern)) {
        std::vector<std::string> next;
        if (component == "/") {
            next.push_back(base);
        } else {
            for (const auto& folder : current) {
                if (hasStar(component)) {
                    addMatches(folder, component, next);
                } else if (std::string path = kz::appendPathComponent(folder, component);
                           platform::host().files->fileExists(path)) {
                    next.push_back(std::move(path));
                }
            }
        }
        current = std::move(next);
    }
    return current;
}

std::string decodeWildcardPath(const std::string& pattern, const std::string& fromBasePath) {
    auto matches = filesMatchingWildcardPath(pattern, fromBasePath);
    return matches.empty() ? kz::appendPathComponent(fromBasePath, pattern) : std::move(matches.front());
}

std::string validateFilename(const std::string& name) {
    if (name == ".") {
        return {};
    }
    const std::string_view undotted = std::string_view(name).substr(name.starts_with('.') ? 1 : 0);
    return kz::replaceAll(kz::replaceAll(kz::trimWhitespaceAndNewlines(undotted), "/", ""), ":", "");
}

std::string uniqueFilename(const std::string& path) {
    auto& files = *platform::host().files;
    if (!files.fileExists(path)) {
        return path;
    }
    const std::string stem = kz::deletingPathExtension(path);
    const std::string extension = kz::pathExtension(path);
    for (long number = 2;; ++number) {
        std::string candidate = stem + kz::format(" %li", number);
        if (!extension.empty()) {
            candidate = kz::appendPathExtension(candidate, extension);
        }
        if (!files.fileExists(candidate)) {
            return candidate;
        }
    }
}

}  // namespace KZFileManager
