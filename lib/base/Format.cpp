#include "lib/base/Format.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>

#include "lib/base/PropertyText.h"
#include "lib/base/RealText.h"
#include "lib/base/Text.h"

namespace kz {

namespace {

constexpr unsigned largestFieldSize = 1024;
constexpr unsigned defaultRealPrecision = 6;

struct Conversion {
    bool leftAligned = false;
    bool zeroFilled = false;
    char sign = '\0';  // '+' or ' ' in front of numbers that are not negative
    unsigned width = 0;
    std::optional<unsigned> precision;
    char kind = '\0';
    std::size_t length = 0;  // of the conversion in the format, the "%" included
};

unsigned readNumber(std::string_view format, std::size_t& at) {
    unsigned number = 0;
    for (; at < format.size() && format[at] >= '0' && format[at] <= '9'; ++at) {
        number = std::min(number * 10 + static_cast<unsigned>(format[at] - '0'), largestFieldSize);
    }
    return number;
}

bool readFlag(char character, Conversion& conversion) {
    switch (character) {
        case '-':
            conversion.leftAligned = true;
            return true;
        case '0':
            conversion.zeroFilled = true;
            return true;
        case '+':
            conversion.sign = '+';
            return true;
        case ' ':
            conversion.sign = conversion.sign == '\0' ? ' ' : conversion.sign;
            return true;
        default:
            return false;
    }
}

// None when the text, which begins with "%", is no conversion.
std::optional<Conversion> readConversion(std::string_view format) {
    Conversion conversion;
    std::size_t at = 1;
    while (at < format.size() && readFlag(format[at], conversion)) {
        ++at;
    }
    conversion.width = readNumber(format, at);
    if (at < format.size() && format[at] == '.') {
        ++at;
        conversion.precision = readNumber(format, at);
    }
    while (at < format.size() && std::string_view("hlqzjt").find(format[at]) != std::string_view::npos) {
        ++at;
    }
    if (at == format.size() || std::string_view("@sciduxXf%").find(format[at]) == std::string_view::npos) {
        return std::nullopt;
    }
    conversion.kind = format[at];
    conversion.length = at + 1;
    return conversion;
}

void appendPadded(std::string& out, std::string_view body, const Conversion& conversion) {
    const std::size_t units = conversion.width == 0 ? 0 : lengthInUTF16(body);
    const std::size_t padding = conversion.width > units ? conversion.width - units : 0;
    if (!conversion.leftAligned) {
        out.append(padding, ' ');
    }
    out.append(body);
    if (conversion.leftAligned) {
        out.append(padding, ' ');
    }
}

// Digits begin with "-" for a negative number. Zeros go between the sign and the first digit.
void appendNumber(std::string& out, std::string_view digits, const Conversion& conversion, std::size_t leastDigits) {
    std::string body;
    if (digits.starts_with('-')) {
        body = "-";
        digits.remove_prefix(1);
    } else if (conversion.sign != '\0' &&
               (conversion.kind == 'i' || conversion.kind == 'd' || conversion.kind == 'f')) {
        body = conversion.sign;
    }
    const std::size_t whole = body.size() + digits.size();
    std::size_t zeros = leastDigits > digits.size() ? leastDigits - digits.size() : 0;
    if (conversion.zeroFilled && !conversion.leftAligned && conversion.width > whole + zeros) {
        zeros = conversion.width - whole;
    }
    body.append(zeros, '0').append(digits);
    appendPadded(out, body, conversion);
}

void appendInteger(std::string& out, auto number, Conversion conversion) {
    char digits[24];
    const bool hexadecimal = conversion.kind == 'x' || conversion.kind == 'X';
    char* end = std::to_chars(std::begin(digits), std::end(digits), number, hexadecimal ? 16 : 10).ptr;
    if (conversion.kind == 'X') {
        std::transform(digits, end, digits,
                       [](char digit) { return digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit; });
    }
    const std::string_view text(digits, static_cast<std::size_t>(end - digits));
    if (conversion.width == 0 && !conversion.precision && conversion.sign == '\0') {
        out.append(text);
        return;
    }
    conversion.zeroFilled = conversion.zeroFilled && !conversion.precision;
    appendNumber(out, text, conversion, conversion.precision.value_or(0));
}

void appendReal(std::string& out, double number, Conversion conversion) {
    const std::string digits =
        conversion.kind == 'f'
            ? fixedReal(number, static_cast<int>(conversion.precision.value_or(defaultRealPrecision)))
            : shortestReal(number);
    conversion.zeroFilled = conversion.zeroFilled && std::isfinite(number);
    appendNumber(out, digits, conversion, 0);
}

// At most so many UTF-16 units of the text, characters kept whole.
std::string_view cutTo(std::string_view text, unsigned units) {
    std::size_t at = 0;
    while (at < text.size() && units > 0) {
        const DecodedCharacter character = decodeCharacter(text.substr(at));
        const unsigned needed = character.bytes == 4 ? 2 : 1;
        if (needed > units) {
            break;
        }
        units -= needed;
        at += character.bytes;
    }
    return text.substr(0, at);
}

void appendText(std::string& out, std::string_view text, const Conversion& conversion) {
    const bool cut = conversion.precision && (conversion.kind == 's' || conversion.kind == '@');
    appendPadded(out, cut ? cutTo(text, *conversion.precision) : text, conversion);
}

// As a character when that is what the conversion asks for and the number is one, in decimal otherwise.
void appendIntegerOrCharacter(std::string& out, auto number, const Conversion& conversion) {
    if (conversion.kind == 'c' && number >= 0 && static_cast<std::uint64_t>(number) <= 0x10FFFF) {
        std::string character;
        appendCharacter(character, static_cast<std::uint32_t>(number));
        appendPadded(out, character, conversion);
    } else if (conversion.kind == 'f') {
        appendReal(out, static_cast<double>(number), conversion);
    } else {
        appendInteger(out, number, conversion);
    }
}

struct ArgumentAppender {
    std::string& out;
    const Conversion& conversion;

    void operator()(std::nullopt_t) const { appendText(out, "(null)", conversion); }
    void operator()(std::string_view text) const { appendText(out, text, conversion); }
    void operator()(std::int64_t number) const { appendIntegerOrCharacter(out, number, conversion); }
    void operator()(std::uint64_t number) const { appendIntegerOrCharacter(out, number, conversion); }
    void operator()(double number) const { appendReal(out, number, conversion); }
    void operator()(char character) const {
        const std::string_view kinds = "iduxXf";
        if (kinds.find(conversion.kind) != std::string_view::npos) {
            appendIntegerOrCharacter(out, std::int64_t{character}, conversion);
        } else {
            appendText(out, std::string_view(&character, 1), conversion);
        }
    }
    void operator()(platform::Date date) const { appendText(out, description(date), conversion); }
    void operator()(const platform::PropertyValue* value) const { appendText(out, description(*value), conversion); }
};

}  // namespace

FormatArgument::FormatArgument(const char* text) : m_value(std::nullopt) {
    if (text != nullptr) {
        m_value = std::string_view(text);
    }
}

FormatArgument::FormatArgument(const std::optional<std::string>& text) : m_value(std::nullopt) {
    if (text) {
        m_value = std::string_view(*text);
    }
}

FormatArgument::FormatArgument(const std::optional<platform::PropertyValue>& value) : m_value(std::nullopt) {
    if (value) {
        m_value = &*value;
    }
}

void appendFormatted(std::string& text, std::string_view format, std::span<const FormatArgument> arguments) {
    std::size_t next = 0;
    while (!format.empty()) {
        const std::size_t percent = std::min(format.find('%'), format.size());
        text.append(format.substr(0, percent));
        format.remove_prefix(percent);
        if (format.empty()) {
            return;
        }
        const std::optional<Conversion> conversion = readConversion(format);
        if (conversion && conversion->kind == '%') {
            text += '%';
        } else if (conversion && next < arguments.size()) {
            std::visit(ArgumentAppender{text, *conversion}, arguments[next].value());
            ++next;
        } else {
            // Not for this formatter: the "%" stays, and what follows it is read on as text.
            text += '%';
            format.remove_prefix(1);
            continue;
        }
        format.remove_prefix(conversion->length);
    }
}

std::string formatWith(std::string_view format, std::span<const FormatArgument> arguments) {
    std::string text;
    appendFormatted(text, format, arguments);
    return text;
}

}  // namespace kz
