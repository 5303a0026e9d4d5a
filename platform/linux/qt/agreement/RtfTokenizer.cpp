#include "platform/linux/qt/agreement/RtfTokenizer.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace platform::qt {

namespace {

constexpr std::size_t kLongestWord = 32;

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isLineBreak(char c) { return c == '\r' || c == '\n' || c == '\0'; }

std::optional<int> hexDigit(char c) {
    if (isDigit(c)) {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return std::nullopt;
}

}  // namespace

RtfToken RtfTokenizer::take(RtfToken::Kind kind, std::size_t count) {
    const std::string_view text = m_rest.substr(0, count);
    m_rest.remove_prefix(text.size());
    return {.kind = kind, .text = text};
}

RtfToken RtfTokenizer::next() {
    while (!m_rest.empty() && isLineBreak(m_rest.front())) {
        m_rest.remove_prefix(1);
    }
    if (m_rest.empty()) {
        return {};
    }
    switch (m_rest.front()) {
        case '{':
            return take(RtfToken::Kind::groupOpen, 1);
        case '}':
            return take(RtfToken::Kind::groupClose, 1);
        case '\\':
            m_rest.remove_prefix(1);
            return readControl();
        default:
            return readText();
    }
}

RtfToken RtfTokenizer::readText() {
    const auto end = std::find_if(m_rest.begin(), m_rest.end(),
                                  [](char c) { return c == '{' || c == '}' || c == '\\' || isLineBreak(c); });
    return take(RtfToken::Kind::text, static_cast<std::size_t>(end - m_rest.begin()));
}

RtfToken RtfTokenizer::readControl() {
    if (m_rest.empty()) {
        return {};
    }
    if (isLetter(m_rest.front())) {
        return readWord();
    }
    if (m_rest.front() == '\'') {
        return readHexByte();
    }
    return take(RtfToken::Kind::symbol, 1);
}

// Odd digits: one digit counts as the byte that it names, none is dropped.
RtfToken RtfTokenizer::readHexByte() {
    m_rest.remove_prefix(1);
    int value = 0;
    int digits = 0;
    while (digits < 2 && !m_rest.empty()) {
        const std::optional<int> digit = hexDigit(m_rest.front());
        if (!digit) {
            break;
        }
        value = value * 16 + *digit;
        m_rest.remove_prefix(1);
        ++digits;
    }
    if (digits == 0) {
        return {.kind = RtfToken::Kind::symbol, .text = "'"};
    }
    return {.kind = RtfToken::Kind::byte, .value = value};
}

RtfToken RtfTokenizer::readWord() {
    const auto nameEnd = std::find_if_not(
        m_rest.begin(), m_rest.begin() + static_cast<std::ptrdiff_t>(std::min(m_rest.size(), kLongestWord)), isLetter);
    RtfToken token = take(RtfToken::Kind::word, static_cast<std::size_t>(nameEnd - m_rest.begin()));
    token.value = readNumber();
    if (m_rest.starts_with(' ')) {
        m_rest.remove_prefix(1);
    }
    if (token.text == "bin") {
        const int count = std::max(token.value.value_or(0), 0);
        return take(RtfToken::Kind::binary, static_cast<std::size_t>(count));
    }
    return token;
}

std::optional<int> RtfTokenizer::readNumber() {
    const bool negative = m_rest.size() > 1 && m_rest[0] == '-' && isDigit(m_rest[1]);
    if (negative) {
        m_rest.remove_prefix(1);
    }
    if (m_rest.empty() || !isDigit(m_rest.front())) {
        return std::nullopt;
    }
    constexpr std::int64_t most = std::numeric_limits<int>::max();
    std::int64_t value = 0;
    while (!m_rest.empty() && isDigit(m_rest.front())) {
        value = std::min(value * 10 + (m_rest.front() - '0'), most);
        m_rest.remove_prefix(1);
    }
    return static_cast<int>(negative ? -value : value);
}

}  // namespace platform::qt
