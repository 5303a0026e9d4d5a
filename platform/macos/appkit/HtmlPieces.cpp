#include "platform/macos/appkit/HtmlPieces.h"

#include <algorithm>
#include <utility>

namespace platform::macos {

namespace {

constexpr auto none = std::string_view::npos;
constexpr std::string_view blanks = " \t\n\r\f";

bool isBlank(char c) { return blanks.find(c) != none; }

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

std::string_view trimmedFront(std::string_view text) {
    const auto first = text.find_first_not_of(blanks);
    return first == none ? std::string_view() : text.substr(first);
}

// Behind the ">" that ends the tag at the front; a quoted value may hold one. None when the tag is cut off.
std::size_t endOfTag(std::string_view text) {
    char quote = 0;
    char before = 0;  // the last character that is no blank
    for (std::size_t index = 1; index < text.size(); ++index) {
        const char c = text[index];
        if (quote != 0) {
            quote = c == quote ? '\0' : quote;
        } else if ((c == '"' || c == '\'') && before == '=') {
            quote = c;
        } else if (c == '>') {
            return index + 1;
        }
        before = isBlank(c) ? before : c;
    }
    return none;
}

std::string_view takeValue(std::string_view& rest) {
    const bool quoted = rest.starts_with('"') || rest.starts_with('\'');
    const std::size_t begin = quoted ? 1 : 0;
    const std::size_t end = quoted ? rest.find(rest.front(), 1) : rest.find_first_of(blanks);
    const std::string_view value = rest.substr(begin, end == none ? none : end - begin);
    rest = end == none ? std::string_view() : rest.substr(end + begin);
    return value;
}

std::vector<HtmlAttribute> attributesOf(std::string_view rest) {
    constexpr std::size_t most = 64;
    std::vector<HtmlAttribute> attributes;
    rest = trimmedFront(rest);
    while (!rest.empty() && attributes.size() < most) {
        const auto length = std::min(rest.find_first_of(" \t\n\r\f=/"), rest.size());
        if (length == 0) {
            rest = trimmedFront(rest.substr(1));
            continue;
        }
        HtmlAttribute attribute{.name = lowerCase(rest.substr(0, length)), .value = {}};
        rest = trimmedFront(rest.substr(length));
        if (rest.starts_with('=')) {
            rest = trimmedFront(rest.substr(1));
            attribute.value = takeValue(rest);
            rest = trimmedFront(rest);
        }
        attributes.push_back(std::move(attribute));
    }
    return attributes;
}

}  // namespace

std::string lowerCase(std::string_view text) {
    std::string lowered(text);
    std::ranges::transform(lowered, lowered.begin(), lower);
    return lowered;
}

const std::string_view* HtmlPiece::attribute(std::string_view wanted) const {
    const auto found = std::ranges::find(attributes, wanted, &HtmlAttribute::name);
    return found == attributes.end() ? nullptr : &found->value;
}

HtmlPiece HtmlReader::take(HtmlPiece::Kind kind, std::size_t length) {
    HtmlPiece piece{.kind = kind, .source = m_rest.substr(0, length), .name = {}, .attributes = {}};
    m_rest.remove_prefix(piece.source.size());
    return piece;
}

HtmlPiece HtmlReader::takeUntil(std::string_view end, std::size_t from) {
    const auto found = m_rest.find(end, from);
    return take(HtmlPiece::Kind::other, found == none ? none : found + end.size());
}

HtmlPiece HtmlReader::next() {
    if (!m_rest.starts_with('<')) {
        return take(HtmlPiece::Kind::text, m_rest.find('<'));
    }
    if (m_rest.starts_with("<!--")) {
        return takeUntil("-->", 4);
    }
    const char second = m_rest.size() > 1 ? m_rest[1] : '\0';
    if (second == '!' || second == '?') {
        return takeUntil(">", 2);
    }
    const bool closing = second == '/';
    const char initial = closing && m_rest.size() > 2 ? m_rest[2] : second;
    return isLetter(initial) ? takeTag(closing) : take(HtmlPiece::Kind::text, 1);
}

HtmlPiece HtmlReader::takeTag(bool closing) {
    const std::size_t length = endOfTag(m_rest);
    if (length == none) {
        return take(HtmlPiece::Kind::other, none);
    }
    HtmlPiece piece = take(closing ? HtmlPiece::Kind::close : HtmlPiece::Kind::open, length);
    const std::size_t begin = closing ? 2 : 1;
    const std::string_view inside = piece.source.substr(begin, length - begin - 1);
    const auto name = inside.substr(0, inside.find_first_of(" \t\n\r\f/"));
    piece.name = lowerCase(name);
    if (!closing) {
        piece.attributes = attributesOf(inside.substr(name.size()));
    }
    return piece;
}

std::string_view HtmlReader::takeRawText(const std::string& name) {
    const std::string tag = "</" + name;
    const auto found = std::search(m_rest.begin(), m_rest.end(), tag.begin(), tag.end(),
                                   [](char c, char wanted) { return lower(c) == wanted; });
    const std::string_view text = m_rest.substr(0, static_cast<std::size_t>(found - m_rest.begin()));
    m_rest.remove_prefix(text.size());
    takeUntil(">", 0);
    return text;
}

}  // namespace platform::macos
