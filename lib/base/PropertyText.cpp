#include "lib/base/PropertyText.h"

#include <algorithm>
#include <chrono>

#include "lib/base/Format.h"
#include "lib/base/RealText.h"
#include "lib/base/Text.h"
#include "platform/ports/Host.h"

namespace kz {

namespace {

constexpr std::uint64_t largestPropertyList = 256ULL << 20U;
constexpr std::size_t indentation = 4;
constexpr std::size_t deepestNesting = 200;
constexpr std::size_t mostBytesShown = 24;

void appendDigits(std::string& text, unsigned number, std::size_t digits) {
    const std::string decimal = std::to_string(number);
    text.append(digits > decimal.size() ? digits - decimal.size() : 0, '0').append(decimal);
}

void appendHexadecimal(std::string& text, std::span<const std::uint8_t> bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    for (const std::uint8_t byte : bytes) {
        text += digits[byte >> 4U];
        text += digits[byte & 0x0FU];
    }
}

// Long data is shown by its first sixteen and last eight bytes.
std::string dataText(std::span<const std::uint8_t> bytes) {
    std::string text = "{length = " + std::to_string(bytes.size()) + ", bytes = 0x";
    if (bytes.size() <= mostBytesShown) {
        appendHexadecimal(text, bytes);
        return text += '}';
    }
    for (const std::size_t from : {0U, 4U, 8U, 12U}) {
        appendHexadecimal(text, bytes.subspan(from, 4));
        text += ' ';
    }
    text += "...";
    for (const std::size_t left : {8U, 4U}) {
        text += ' ';
        appendHexadecimal(text, bytes.subspan(bytes.size() - left, 4));
    }
    return text += '}';
}

bool isBareWord(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char byte) {
        return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') || (byte >= '0' && byte <= '9') ||
               byte == '_';
    });
}

std::string quotedWhereNeeded(std::string_view text) {
    if (isBareWord(text)) {
        return std::string(text);
    }
    std::string quoted = "\"";
    for (const char byte : text) {
        if (byte == '"' || byte == '\\') {
            quoted += '\\';
        }
        if (byte == '\n') {
            quoted += "\\n";
        } else {
            quoted += byte;
        }
    }
    return quoted += '"';
}

void appendNested(std::string& text, const platform::PropertyValue& value, std::size_t depth);

void appendArray(std::string& text, const platform::PropertyArray& array, std::size_t depth) {
    text += "(\n";
    for (std::size_t at = 0; at < array.size(); ++at) {
        text.append((depth + 1) * indentation, ' ');
        appendNested(text, array[at], depth + 1);
        text += at + 1 < array.size() ? ",\n" : "\n";
    }
    text.append(depth * indentation, ' ') += ')';
}

void appendDictionary(std::string& text, const platform::PropertyDictionary& dictionary, std::size_t depth) {
    text += "{\n";
    for (const auto& [key, value] : dictionary) {
        text.append((depth + 1) * indentation, ' ').append(quotedWhereNeeded(key)).append(" = ");
        appendNested(text, value, depth + 1);
        text += ";\n";
    }
    text.append(depth * indentation, ' ') += '}';
}

// Arrays and dictionaries only; anything else has a description that does not depend on where it stands.
bool appendCollection(std::string& text, const platform::PropertyValue& value, std::size_t depth) {
    const auto* const array = value.as<platform::PropertyArray>();
    const auto* const dictionary = value.as<platform::PropertyDictionary>();
    if (array == nullptr && dictionary == nullptr) {
        return false;
    }
    if (depth > deepestNesting) {
        text += "...";
    } else if (array != nullptr) {
        appendArray(text, *array, depth);
    } else {
        appendDictionary(text, *dictionary, depth);
    }
    return true;
}

void appendNested(std::string& text, const platform::PropertyValue& value, std::size_t depth) {
    if (appendCollection(text, value, depth)) {
        return;
    }
    const auto* const string = value.as<std::string>();
    text += string != nullptr ? quotedWhereNeeded(*string) : description(value);
}

struct ScalarText {
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const { return shortestReal(number); }
    std::string operator()(bool flag) const { return flag ? "1" : "0"; }
    std::string operator()(platform::Date date) const { return description(date); }
    std::string operator()(const platform::PropertyData& data) const { return dataText(data); }
    std::string operator()(const platform::PropertyArray&) const { return {}; }
    std::string operator()(const platform::PropertyDictionary&) const { return {}; }
};

bool boolValueOfText(std::string_view text) {
    const auto blanks = std::min(text.find_first_not_of(" \t"), text.size());
    text.remove_prefix(blanks);
    if (text.starts_with('-') || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    const auto zeros = std::min(text.find_first_not_of('0'), text.size());
    text.remove_prefix(zeros);
    return !text.empty() && std::string_view("YyTt123456789").find(text.front()) != std::string_view::npos;
}

}  // namespace

std::string description(platform::Date date) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(date);
    const auto day = std::chrono::floor<std::chrono::days>(seconds);
    const std::chrono::year_month_day calendar(day);
    const std::chrono::hh_mm_ss time(seconds - day);
    std::string text;
    appendDigits(text, static_cast<unsigned>(static_cast<int>(calendar.year())), 4);
    appendDigits(text += '-', static_cast<unsigned>(calendar.month()), 2);
    appendDigits(text += '-', static_cast<unsigned>(calendar.day()), 2);
    appendDigits(text += ' ', static_cast<unsigned>(time.hours().count()), 2);
    appendDigits(text += ':', static_cast<unsigned>(time.minutes().count()), 2);
    appendDigits(text += ':', static_cast<unsigned>(time.seconds().count()), 2);
    return text += " +0000";
}

std::string description(const platform::PropertyValue& value) {
    std::string text;
    if (!appendCollection(text, value, 0)) {
        text = std::visit(ScalarText{}, value.value);
    }
    return text;
}

bool boolValue(const platform::PropertyValue& value) {
    if (const auto* const flag = value.as<bool>()) {
        return *flag;
    }
    if (const auto* const integer = value.as<std::int64_t>()) {
        return *integer != 0;
    }
    if (const auto* const real = value.as<double>()) {
        return *real != 0;
    }
    const auto* const text = value.as<std::string>();
    return text != nullptr && boolValueOfText(*text);
}

std::optional<platform::PropertyDictionary> dictionaryWithContentsOfFile(const std::string& path) {
    const platform::Host& host = platform::host();
    const auto bytes = host.files->readFile(path, largestPropertyList);
    if (!bytes) {
        return std::nullopt;
    }
    auto parsed = host.propertyLists->parse(*bytes);
    auto* const root = std::get_if<platform::PropertyValue>(&parsed);
    auto* const dictionary = root == nullptr ? nullptr : std::get_if<platform::PropertyDictionary>(&root->value);
    return dictionary == nullptr ? std::nullopt : std::optional(std::move(*dictionary));
}

}  // namespace kz
