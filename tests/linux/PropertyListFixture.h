// Reading property lists in tests.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <variant>

#include "platform/linux/services/propertylists/LinuxPropertyLists.h"

namespace fixture {

using platform::Error;
using platform::PropertyArray;
using platform::PropertyData;
using platform::PropertyDictionary;
using platform::PropertyValue;

inline std::variant<PropertyValue, Error> parse(std::string_view bytes) {
    return platform::linux_host::LinuxPropertyLists().parse(bytes);
}

// The value, or the text "refused: …" with the reason.
inline PropertyValue valueOf(std::string_view bytes) {
    const auto parsed = parse(bytes);
    const auto* error = std::get_if<Error>(&parsed);
    return error == nullptr ? std::get<PropertyValue>(parsed) : PropertyValue{"refused: " + error->description};
}

// Why the list is refused; empty when it is not.
inline std::string refusalOf(std::string_view bytes) {
    const auto parsed = parse(bytes);
    const auto* error = std::get_if<Error>(&parsed);
    return error == nullptr ? std::string() : error->description;
}

// Entry of a root dictionary; none when it is another value or has no such key.
inline std::optional<PropertyValue> entryOf(std::string_view bytes, const std::string& key) {
    const PropertyValue root = valueOf(bytes);
    const auto* dictionary = root.as<PropertyDictionary>();
    if (dictionary == nullptr || !dictionary->contains(key)) {
        return std::nullopt;
    }
    return dictionary->at(key);
}

template <typename Kind>
PropertyValue value(Kind content) {
    return PropertyValue{std::move(content)};
}
inline PropertyValue text(std::string content) { return PropertyValue{std::move(content)}; }
inline PropertyValue integer(std::int64_t number) { return PropertyValue{number}; }

inline platform::Date secondsSince1970(long long seconds) { return platform::Date(std::chrono::seconds(seconds)); }

}  // namespace fixture

namespace platform {
// What a failing test shows of a value.
inline void PrintTo(const PropertyValue& value, std::ostream* out) {
    *out << platform::linux_host::LinuxPropertyLists().serialize(value);
}
}  // namespace platform
