#include "tools/wickfield-bundle/check/BashFeatures.h"

#include <algorithm>
#include <array>

namespace wickfield_bundle {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t'; }
bool isWordCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

// The line without what is in single quotes and without a comment at its end. A text that goes on over several lines
// counts as ended with the line.
std::string code(std::string_view line) {
    std::string kept;
    char quote = 0;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (c == '\\' && quote != '\'') {
            ++i;
        } else if (quote == '\'') {
            quote = c == '\'' ? char{0} : quote;
        } else if (c == '\'' && quote == 0) {
            quote = c;
        } else if (c == '#' && quote == 0 && (i == 0 || isBlank(line[i - 1]) || line[i - 1] == ';')) {
            break;
        } else {
            quote = c != '"' ? quote : quote == '"' ? char{0} : c;
            kept += c;
        }
    }
    return kept;
}

// The line without what is in double quotes, too.
std::string unquoted(std::string_view line) {
    std::string kept;
    bool isQuoted = false;
    for (const char c : line) {
        isQuoted = isQuoted != (c == '"');
        if (!isQuoted) {
            kept += c;
        }
    }
    return kept;
}

// What ends the here-document that the line begins; "" when it begins none.
std::string_view endOfHereDocument(std::string_view line) {
    auto at = line.find("<<");
    if (at == std::string_view::npos || line.substr(at).starts_with("<<<")) {
        return {};
    }
    at += line.substr(at).starts_with("<<-") ? 3 : 2;
    at = std::min(line.find_first_not_of(" \t'\"\\", at), line.size());
    const auto end = std::ranges::find_if_not(line.substr(at), isWordCharacter) - line.substr(at).begin();
    return line.substr(at, static_cast<std::size_t>(end));
}

// Words of a line, at blanks and at what separates commands.
std::string_view nextWord(std::string_view& line) {
    constexpr std::string_view separators = " \t;|&()`{}";
    const auto begin = std::min(line.find_first_not_of(separators), line.size());
    const auto end = std::min(line.find_first_of(separators, begin), line.size());
    const std::string_view word = line.substr(begin, end - begin);
    line.remove_prefix(end);
    return word;
}

std::string newCommand(std::string_view line) {
    std::string_view before;
    while (!line.empty()) {
        const std::string_view word = nextWord(line);
        if (word == "mapfile" || word == "readarray" || word == "coproc") {
            return std::string(word);
        }
        const bool declares = before == "declare" || before == "local" || before == "typeset";
        if (declares && word.starts_with('-') && word.find_first_of("Agn") != std::string_view::npos) {
            return std::string(before) + " " + std::string(word);
        }
        if (before == "-s" && (word == "globstar" || word == "lastpipe" || word == "inherit_errexit")) {
            return "shopt -s " + std::string(word);
        }
        before = word;
    }
    return {};
}

std::string newRedirection(std::string_view line) {
    for (const std::string_view mark : {"&>>", "|&"}) {
        if (line.find(mark) != std::string_view::npos) {
            return std::string(mark);
        }
    }
    return {};
}

// "${name^^}", "${name,,}", "${name@Q}"
std::string newExpansion(std::string_view line) {
    for (auto at = line.find("${"); at != std::string_view::npos; at = line.find("${", at + 2)) {
        std::size_t end = at + 2;
        while (end < line.size() && isWordCharacter(line[end])) {
            ++end;
        }
        if (end > at + 2 && end < line.size() && (line[end] == '^' || line[end] == ',' || line[end] == '@')) {
            const auto close = line.find('}', end);
            return std::string(line.substr(at, close == std::string_view::npos ? close : close + 1 - at));
        }
    }
    return {};
}

std::string newIn(std::string_view line) {
    const std::string withTexts = code(line);
    const std::string plain = unquoted(withTexts);
    for (std::string feature : {newCommand(plain), newRedirection(plain), newExpansion(withTexts)}) {
        if (!feature.empty()) {
            return feature;
        }
    }
    return {};
}

}  // namespace

std::optional<NewerBashFeature> newerBashFeature(std::string_view script) {
    std::string hereDocument;
    for (std::size_t number = 1; !script.empty(); ++number) {
        const auto end = std::min(script.find('\n'), script.size());
        const std::string_view line = script.substr(0, end);
        script.remove_prefix(std::min(end + 1, script.size()));
        if (!hereDocument.empty()) {
            const auto begin = std::min(line.find_first_not_of('\t'), line.size());
            if (line.substr(begin) == hereDocument) {
                hereDocument.clear();
            }
            continue;
        }
        if (std::string feature = newIn(line); !feature.empty()) {
            return NewerBashFeature{.feature = std::move(feature), .line = number};
        }
        hereDocument = endOfHereDocument(line);
    }
    return std::nullopt;
}

}  // namespace wickfield_bundle
