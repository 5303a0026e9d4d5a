#include "platform/linux/services/UserDirs.h"

#include <optional>

namespace platform::linux_host {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const auto first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view{}
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// The text between double quotes with its backslashes taken out; none when it is not quoted as a whole.
std::optional<std::string> unquoted(std::string_view text) {
    if (!text.starts_with('"')) {
        return std::nullopt;
    }
    std::string result;
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '"') {
            return i + 1 == text.size() ? std::optional(result) : std::nullopt;
        }
        if (text[i] == '\\' && ++i == text.size()) {
            return std::nullopt;
        }
        result += text[i];
    }
    return std::nullopt;
}

std::string withoutTrailingSlashes(std::string path) {
    path.resize(path.find_last_not_of('/') + 1);
    return path;
}

std::optional<std::string> folderFrom(std::string_view quoted, const std::string& home) {
    constexpr std::string_view homeVariable = "$HOME";
    auto path = unquoted(quoted);
    if (!path) {
        return std::nullopt;
    }
    if (*path == homeVariable || path->starts_with("$HOME/")) {
        path->replace(0, homeVariable.size(), home);
    }
    if (!path->starts_with('/') || path->find('\0') != std::string::npos) {
        return std::nullopt;
    }
    auto folder = withoutTrailingSlashes(*path);
    return folder.empty() || folder == withoutTrailingSlashes(home) ? std::nullopt : std::optional(std::move(folder));
}

}  // namespace

std::map<std::string, std::string> parseUserDirs(std::string_view text, const std::string& home) {
    std::map<std::string, std::string> folders;
    while (!text.empty()) {
        const auto end = text.find('\n');
        const auto line = trimmed(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);

        const auto equals = line.find('=');
        if (line.starts_with('#') || equals == std::string_view::npos) {
            continue;
        }
        const auto name = trimmed(line.substr(0, equals));
        if (!name.starts_with("XDG_") || !name.ends_with("_DIR")) {
            continue;
        }
        if (auto folder = folderFrom(trimmed(line.substr(equals + 1)), home)) {
            folders.insert_or_assign(std::string(name), std::move(*folder));
        }
    }
    return folders;
}

}  // namespace platform::linux_host
