#include "platform/linux/services/propertylists/OldStylePropertyList.h"

#include <algorithm>
#include <array>
#include <string>

#include "platform/linux/services/propertylists/PropertyListReading.h"
#include "platform/linux/services/propertylists/Unicode.h"

namespace platform::linux_host {

namespace {

// The upper half of the NeXTSTEP character set.
constexpr std::array<char16_t, 128> upperHalf{
    0x00A0, 0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C7, 0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC,
    0x00CD, 0x00CE, 0x00CF, 0x00D0, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D9, 0x00DA, 0x00DB,
    0x00DC, 0x00DD, 0x00DE, 0x00B5, 0x00D7, 0x00F7, 0x00A9, 0x00A1, 0x00A2, 0x00A3, 0x2044, 0x00A5, 0x0192,
    0x00A7, 0x00A4, 0x2019, 0x201C, 0x00AB, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x00AE, 0x2013, 0x2020, 0x2021,
    0x00B7, 0x00A6, 0x00B6, 0x2022, 0x201A, 0x201E, 0x201D, 0x00BB, 0x2026, 0x2030, 0x00AC, 0x00BF, 0x00B9,
    0x02CB, 0x00B4, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9, 0x00A8, 0x00B2, 0x02DA, 0x00B8, 0x00B3, 0x02DD,
    0x02DB, 0x02C7, 0x2014, 0x00B1, 0x00BC, 0x00BD, 0x00BE, 0x00E0, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5,
    0x00E7, 0x00E8, 0x00E9, 0x00EA, 0x00EB, 0x00EC, 0x00C6, 0x00ED, 0x00AA, 0x00EE, 0x00EF, 0x00F0, 0x00F1,
    0x0141, 0x00D8, 0x0152, 0x00BA, 0x00F2, 0x00F3, 0x00F4, 0x00F5, 0x00F6, 0x00E6, 0x00F9, 0x00FA, 0x00FB,
    0x0131, 0x00FC, 0x00FD, 0x0142, 0x00F8, 0x0153, 0x00DF, 0x00FE, 0x00FF, 0xFFFD, 0xFFFD};

bool isUnquoted(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') ||
           std::string_view("_$/:.-").find(character) != std::string_view::npos;
}

class Reader {
public:
    explicit Reader(std::string_view text) : m_text(text) {}

    PropertyValue root() {
        skipBlanks();
        if (atEnd()) {
            return {PropertyDictionary{}};
        }
        const std::size_t begin = m_position;
        PropertyValue first = value();
        skipBlanks();
        if (first.as<std::string>() != nullptr && (next() == '=' || next() == ';')) {
            m_position = begin;
            first = {pairs()};
        }
        if (!atEnd()) {
            fail("something follows the list");
        }
        return first;
    }

private:
    [[noreturn]] void fail(std::string reason) const { throw Malformed{std::move(reason), m_position}; }

    bool atEnd() const { return m_position >= m_text.size(); }
    char next() const { return atEnd() ? '\0' : m_text[m_position]; }
    bool take(char character) {
        const bool isNext = !atEnd() && next() == character;
        m_position += isNext ? 1 : 0;
        return isNext;
    }

    void skipBlanks() {
        while (!atEnd()) {
            const auto rest = m_text.substr(m_position);
            if (rest.starts_with("//")) {
                m_position = std::min(m_text.find_first_of("\r\n", m_position), m_text.size());
            } else if (rest.starts_with("/*")) {
                const auto end = m_text.find("*/", m_position + 2);
                if (end == std::string_view::npos) {
                    fail("a comment does not end");
                }
                m_position = end + 2;
            } else if (rest.starts_with("\u2028") || rest.starts_with("\u2029")) {
                m_position += 3;
            } else if (std::string_view(" \t\n\v\f\r").find(next()) != std::string_view::npos) {
                ++m_position;
            } else {
                return;
            }
        }
    }

    PropertyValue value() {
        skipBlanks();
        const Nesting nesting(m_depth, m_position);
        m_budget.chargeValue(m_position);
        if (take('{')) {
            auto values = pairs();
            if (!take('}')) {
                fail("a dictionary does not end");
            }
            return {std::move(values)};
        }
        if (take('(')) {
            return {array()};
        }
        if (take('<')) {
            return {data()};
        }
        return {string()};
    }

    std::string string() {
        skipBlanks();
        if (next() == '"' || next() == '\'') {
            return quoted(m_text[m_position++]);
        }
        const std::size_t begin = m_position;
        while (!atEnd() && isUnquoted(next())) {
            ++m_position;
        }
        if (m_position == begin) {
            fail(atEnd() ? "the list is cut short" : "a character stands where a value or key should begin");
        }
        m_budget.charge(m_position - begin, begin);
        return std::string(m_text.substr(begin, m_position - begin));
    }

    std::string quoted(char quote) {
        const std::size_t begin = m_position;
        std::string text;
        while (!take(quote)) {
            if (atEnd()) {
                fail("a quoted string does not end");
            }
            if (take('\\')) {
                appendEscape(text);
            } else {
                text += m_text[m_position++];
            }
        }
        m_budget.charge(text.size(), begin);
        return text;
    }

    void appendEscape(std::string& text) {
        if (atEnd()) {
            fail("a quoted string does not end");
        }
        static constexpr std::string_view letters = "abfnrtv";
        static constexpr std::string_view meanings = "\a\b\f\n\r\t\v";
        const char character = m_text[m_position++];
        if (character >= '0' && character <= '7') {
            --m_position;
            const unsigned code = digits(3, 8) & 0xFFU;
            appendUtf8(text, code < 0x80 ? code : upperHalf.at(code - 0x80));
        } else if (character == 'U') {
            appendUtf8(text, utf16Escape());
        } else if (const auto index = letters.find(character); index != std::string_view::npos) {
            text += meanings[index];
        } else {
            text += character;
        }
    }

    // Two escapes of a surrogate pair are one character.
    char32_t utf16Escape() {
        const char32_t high = digits(4, 16);
        const std::size_t afterFirst = m_position;
        if (high >= 0xD800 && high < 0xDC00 && take('\\') && take('U')) {
            const char32_t low = digits(4, 16);
            if (low >= 0xDC00 && low <= 0xDFFF) {
                return 0x10000 + ((high - 0xD800) << 10U) + (low - 0xDC00);
            }
        }
        m_position = afterFirst;
        return high;
    }

    // Up to that many digits; the value of none is 0.
    unsigned digits(int most, int base) {
        unsigned number = 0;
        for (int i = 0; i < most && !atEnd() && hexDigit(next()) >= 0 && hexDigit(next()) < base; ++i) {
            number = number * static_cast<unsigned>(base) + static_cast<unsigned>(hexDigit(m_text[m_position++]));
        }
        return number;
    }

    PropertyArray array() {
        PropertyArray values;
        for (skipBlanks(); !take(')'); skipBlanks()) {
            values.push_back(value());
            skipBlanks();
            if (!take(',') && next() != ')') {
                fail("an array's value is followed by neither \",\" nor \")\"");
            }
        }
        return values;
    }

    // Up to a "}" or the end.
    PropertyDictionary pairs() {
        PropertyDictionary values;
        for (skipBlanks(); !atEnd() && next() != '}'; skipBlanks()) {
            m_budget.chargeValue(m_position);
            std::string key = string();
            skipBlanks();
            PropertyValue paired = take('=') ? value() : PropertyValue{key};
            skipBlanks();
            if (!take(';')) {
                fail("a pair does not end with \";\"");
            }
            values.insert_or_assign(std::move(key), std::move(paired));
        }
        return values;
    }

    PropertyData data() {
        PropertyData bytes;
        for (skipBlanks(); !take('>'); skipBlanks()) {
            const int high = hexDigit(next());
            const int low = m_position + 1 < m_text.size() ? hexDigit(m_text[m_position + 1]) : -1;
            if (high < 0 || low < 0) {
                fail("data holds something other than pairs of hexadecimal digits");
            }
            bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
            m_position += 2;
        }
        m_budget.charge(bytes.size(), m_position);
        return bytes;
    }

    std::string_view m_text;
    std::size_t m_position = 0;
    int m_depth = 0;
    MemoryBudget m_budget;
};

}  // namespace

PropertyValue parseOldStylePropertyList(std::string_view text) { return Reader(text).root(); }

}  // namespace platform::linux_host
