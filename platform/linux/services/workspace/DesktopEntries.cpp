#include "platform/linux/services/workspace/DesktopEntries.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/posix/PathParts.h"
#include "platform/posix/WholeFile.h"

namespace platform::linux_host {

namespace {

constexpr std::uint64_t largestEntry = 1U << 20U;

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) {
        text.remove_suffix(1);
    }
    return text;
}

// Strings write a blank, newline, tab, return and backslash as \s \n \t \r and two backslashes.
std::string unescaped(std::string_view value) {
    std::string plain;
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] != '\\' || i + 1 == value.size()) {
            plain += value[i];
            continue;
        }
        constexpr std::string_view codes = "sntr\\";
        constexpr std::string_view meanings = " \n\t\r\\";
        const auto code = codes.find(value[++i]);
        plain += code == std::string_view::npos ? std::string{'\\', value[i]} : std::string(1, meanings[code]);
    }
    return plain;
}

// The words of an Exec line; "\" protects a character inside quotes. False when a quote does not end.
bool splitWords(const std::string& exec, std::vector<std::string>& words) {
    std::string word;
    bool quoted = false;
    bool started = false;
    for (std::size_t i = 0; i < exec.size(); ++i) {
        if (exec[i] == '"') {
            quoted = !quoted;
            started = true;
        } else if (quoted && exec[i] == '\\' && i + 1 < exec.size()) {
            word += exec[++i];
        } else if (!quoted && (exec[i] == ' ' || exec[i] == '\t')) {
            if (started) {
                words.push_back(std::exchange(word, {}));
            }
            started = false;
        } else {
            word += exec[i];
            started = true;
        }
    }
    if (started) {
        words.push_back(std::move(word));
    }
    return !quoted;
}

int hexadecimalValue(char digit) {
    constexpr std::string_view digits = "0123456789abcdef";
    const char lower = digit >= 'A' && digit <= 'F' ? static_cast<char>(digit - 'A' + 'a') : digit;
    const auto found = digits.find(lower);
    return found == std::string_view::npos ? -1 : static_cast<int>(found);
}

// The path that a "file" address stands for; anything else as it is.
std::string localPath(const std::string& url) {
    constexpr std::string_view scheme = "file://";
    constexpr std::string_view thisMachine = "localhost";
    std::string_view encoded = url;
    if (!encoded.starts_with(scheme)) {
        return url;
    }
    encoded.remove_prefix(scheme.size());
    if (encoded.starts_with(thisMachine)) {
        encoded.remove_prefix(thisMachine.size());
    }
    if (!encoded.starts_with('/')) {
        return url;  // on another machine
    }
    std::string path;
    while (!encoded.empty()) {
        std::size_t length = 1;
        char byte = encoded.front();
        if (byte == '%') {
            const int high = encoded.size() > 2 ? hexadecimalValue(encoded[1]) : -1;
            const int low = encoded.size() > 2 ? hexadecimalValue(encoded[2]) : -1;
            if (high < 0 || low < 0 || high + low == 0) {
                return url;
            }
            byte = static_cast<char>(high * 16 + low);
            length = 3;
        }
        path += byte;
        encoded.remove_prefix(length);
    }
    return path;
}

// One word with its field codes filled in; codes that stand for something the entry lacks vanish.
std::string expanded(const std::string& word, const DesktopEntry& entry, const std::vector<std::string>& urls) {
    std::string text;
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (word[i] != '%' || i + 1 == word.size()) {
            text += word[i];
            continue;
        }
        switch (word[++i]) {
            case '%':
                text += '%';
                break;
            case 'c':
                text += entry.name;
                break;
            case 'k':
                text += entry.path;
                break;
            case 'u':
                text += urls.empty() ? std::string() : urls.front();
                break;
            case 'f':
                text += urls.empty() ? std::string() : localPath(urls.front());
                break;
            default:
                break;
        }
    }
    return text;
}

}  // namespace

std::optional<DesktopEntry> parseDesktopEntry(std::string_view text) {
    DesktopEntry entry;
    bool inGroup = false;
    bool isApplication = false;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        const std::string_view line = trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (line.starts_with('[')) {
            inGroup = line == "[Desktop Entry]";
            continue;
        }
        const auto equals = line.find('=');
        if (!inGroup || line.starts_with('#') || equals == std::string_view::npos) {
            continue;
        }
        const std::string_view key = trimmed(line.substr(0, equals));
        const std::string value = unescaped(trimmed(line.substr(equals + 1)));
        if (key == "Type") {
            isApplication = value == "Application";
        } else if (key == "Hidden" && value == "true") {
            return std::nullopt;
        } else if (key == "Name") {
            entry.name = value;
        } else if (key == "Icon") {
            entry.icon = value;
        } else if (key == "Exec") {
            entry.exec = value;
        }
    }
    return isApplication && !entry.exec.empty() ? std::optional(std::move(entry)) : std::nullopt;
}

std::optional<DesktopEntry> findDesktopEntry(const std::string& identifier,
                                             const std::vector<std::string>& dataFolders) {
    if (identifier.empty() || identifier.find('/') != std::string::npos || identifier.find('\0') != std::string::npos) {
        return std::nullopt;
    }
    for (const std::string& folder : dataFolders) {
        const std::string path = posix::joinPath(posix::joinPath(folder, "applications"), identifier + ".desktop");
        if (const auto text = posix::readWholeFile(path, largestEntry)) {
            auto entry = parseDesktopEntry(*text);
            if (entry) {
                entry->path = path;
            }
            return entry;
        }
    }
    return std::nullopt;
}

std::vector<std::string> commandLine(const DesktopEntry& entry, const std::vector<std::string>& urls) {
    std::vector<std::string> words;
    if (!splitWords(entry.exec, words)) {
        return {};
    }
    std::vector<std::string> command;
    for (const std::string& word : words) {
        if (word == "%U") {
            command.insert(command.end(), urls.begin(), urls.end());
        } else if (word == "%F") {
            std::transform(urls.begin(), urls.end(), std::back_inserter(command), localPath);
        } else if (word == "%i") {
            if (!entry.icon.empty()) {
                command.insert(command.end(), {"--icon", entry.icon});
            }
        } else {
            std::string text = expanded(word, entry, urls);
            if (!text.empty() || word.empty()) {
                command.push_back(std::move(text));
            }
        }
    }
    return command;
}

}  // namespace platform::linux_host
