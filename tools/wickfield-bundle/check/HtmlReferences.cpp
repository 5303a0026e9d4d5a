#include "tools/wickfield-bundle/check/HtmlReferences.h"

#include <algorithm>

#include "lib/base/Text.h"

namespace wickfield_bundle {

namespace {

constexpr std::size_t mostReferences = 100;
constexpr std::size_t longestReference = 200;  // bytes
constexpr std::size_t mostOfHead = 4096;       // bytes
constexpr std::string_view blanks = " \t\r\n\f";

bool isNameCharacter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-'; }

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

bool isSame(std::string_view text, std::string_view lowerCase) {
    return std::ranges::equal(text, lowerCase, {}, lowered);
}

std::size_t findIgnoringCase(std::string_view text, std::string_view lowerCase, std::size_t from) {
    const auto rest = text.substr(std::min(from, text.size()));
    const auto* const found = std::search(rest.begin(), rest.end(), lowerCase.begin(), lowerCase.end(),
                                          [](char left, char right) { return lowered(left) == right; });
    return found == rest.end() ? std::string_view::npos : static_cast<std::size_t>(found - text.begin());
}

std::string_view trimmed(std::string_view text) {
    const auto begin = std::min(text.find_first_not_of(blanks), text.size());
    text.remove_prefix(begin);
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

class ReferenceReader {
public:
    HtmlReferences read(std::string_view html) {
        std::size_t at = 0;
        while ((at = html.find('<', at)) != std::string_view::npos) {
            if (html.substr(at).starts_with("<!--")) {
                at = html.find("-->", at);
                continue;
            }
            const std::size_t end = std::min(html.find('>', at), html.size());
            readTag(html.substr(at + 1, end - at - 1));
            at = end;
        }
        readStyles(html);
        return std::move(m_references);
    }

private:
    void readTag(std::string_view tag) {
        std::size_t end = 0;
        while (end < tag.size() && isNameCharacter(tag[end])) {
            ++end;
        }
        const std::string_view name = tag.substr(0, end);
        tag.remove_prefix(end);
        const bool isPicture = isSame(name, "img");
        const bool isSheet = isSame(name, "link") && findIgnoringCase(tag, "stylesheet", 0) != std::string_view::npos;
        while (!tag.empty()) {
            std::string_view attribute;
            const std::string_view value = takeAttribute(tag, attribute);
            if (isSame(attribute, "src") || isSame(attribute, "background") || (isSheet && isSame(attribute, "href"))) {
                note(value, isPicture);
            }
        }
    }

    // Its value, "" for one without. Takes at least a byte.
    static std::string_view takeAttribute(std::string_view& tag, std::string_view& name) {
        std::size_t at = 0;
        while (at < tag.size() && !isNameCharacter(tag[at])) {
            ++at;
        }
        const std::size_t begin = at;
        while (at < tag.size() && isNameCharacter(tag[at])) {
            ++at;
        }
        name = tag.substr(begin, at - begin);
        tag.remove_prefix(std::min(tag.find_first_not_of(blanks, at), tag.size()));
        if (!tag.starts_with('=')) {
            return {};
        }
        tag.remove_prefix(std::min(tag.find_first_not_of(blanks, 1), tag.size()));
        const bool isQuoted = tag.starts_with('"') || tag.starts_with('\'');
        const std::size_t first = isQuoted ? 1 : 0;
        const std::size_t last = std::min(isQuoted ? tag.find(tag.front(), 1) : tag.find_first_of(blanks), tag.size());
        const std::string_view value = tag.substr(first, last - first);
        tag.remove_prefix(std::min(last + first, tag.size()));
        return value;
    }

    void readStyles(std::string_view html) {
        for (const std::string_view opening : {"url(", "@import"}) {
            for (auto at = findIgnoringCase(html, opening, 0); at != std::string_view::npos;
                 at = findIgnoringCase(html, opening, at + 1)) {
                const std::string_view rest = html.substr(at + opening.size(), longestReference);
                const auto begin = std::min(rest.find_first_not_of(" \t\r\n'\""), rest.size());
                const auto end = std::min(rest.find_first_of("'\");<", begin), rest.size());
                note(rest.substr(begin, end - begin), false);
            }
        }
    }

    void note(std::string_view reference, bool isPicture) {
        const std::string name(trimmed(reference).substr(0, longestReference));
        const std::string lower = kz::lowercased(name);
        const bool isRemote = lower.starts_with("http:") || lower.starts_with("https:") || lower.starts_with("ftp:") ||
                              lower.starts_with("//");
        if (isRemote) {
            add(m_references.remote, name);
        } else if (isPicture && !name.empty() && name.find_first_of("%&?#:") == std::string::npos) {
            add(m_references.pictures, name);
        }
    }

    static void add(std::vector<std::string>& list, const std::string& name) {
        if (list.size() < mostReferences && std::ranges::find(list, name) == list.end()) {
            list.push_back(name);
        }
    }

    HtmlReferences m_references;
};

}  // namespace

HtmlReferences referencesOf(std::string_view html) { return ReferenceReader().read(html); }

bool namesCharset(std::string_view html) {
    const std::string_view head = html.substr(0, mostOfHead);
    return findIgnoringCase(head, "charset", 0) != std::string_view::npos ||
           findIgnoringCase(head.substr(0, head.find('>')), "encoding", 0) != std::string_view::npos;
}

}  // namespace wickfield_bundle
