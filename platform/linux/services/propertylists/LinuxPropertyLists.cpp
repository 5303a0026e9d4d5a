#include "platform/linux/services/propertylists/LinuxPropertyLists.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <optional>
#include <string>

#include "platform/linux/services/propertylists/BinaryPropertyList.h"
#include "platform/linux/services/propertylists/OldStylePropertyList.h"
#include "platform/linux/services/propertylists/PropertyListReading.h"
#include "platform/linux/services/propertylists/Unicode.h"
#include "platform/linux/services/propertylists/XmlPropertyList.h"

namespace platform::linux_host {

namespace {

// By the byte-order mark or, without one, by the zero half of a first ASCII character.
std::optional<ByteOrder> utf16Order(std::string_view bytes) {
    if (bytes.starts_with("\xFE\xFF") || (bytes.size() >= 2 && bytes[0] == '\0' && bytes[1] != '\0')) {
        return ByteOrder::bigEndian;
    }
    if (bytes.starts_with("\xFF\xFE") || (bytes.size() >= 2 && bytes[0] != '\0' && bytes[1] == '\0')) {
        return ByteOrder::littleEndian;
    }
    return std::nullopt;
}

std::string_view withoutByteOrderMark(std::string_view text) {
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    text.remove_prefix(text.starts_with(mark) ? mark.size() : 0);
    return text;
}

bool saysLatin1(std::string_view xml) {
    const auto declaration = xml.substr(0, std::min(xml.find("?>"), xml.size()));
    return declaration.starts_with("<?xml") && (declaration.find("ISO-8859-1") != std::string_view::npos ||
                                                declaration.find("iso-8859-1") != std::string_view::npos);
}

// The text as UTF-8 without a byte-order mark; none when it is in no encoding that is understood.
std::optional<std::string> converted(std::string_view bytes) {
    if (const auto order = utf16Order(bytes)) {
        auto text = utf8FromUtf16(bytes, *order);
        return text ? std::optional(std::string(withoutByteOrderMark(*text))) : std::nullopt;
    }
    if (!saysLatin1(withoutByteOrderMark(bytes))) {
        return std::nullopt;
    }
    std::string text;
    for (const char byte : bytes) {
        appendUtf8(text, static_cast<unsigned char>(byte));
    }
    return text;
}

PropertyValue parseText(std::string_view text) {
    return isXmlPropertyList(text) ? parseXmlPropertyList(text) : parseOldStylePropertyList(text);
}

Error errorFor(const Malformed& malformed, std::string_view text) {
    const auto before = text.substr(0, std::min(malformed.position, text.size()));
    const auto line = std::ranges::count(before, '\n') + 1;
    return {EINVAL, "The property list cannot be read: " + malformed.reason + " (line " + std::to_string(line) + ")"};
}

std::variant<PropertyValue, Error> parseAny(std::string_view bytes) {
    if (bytes.empty()) {
        return Error{EINVAL, "The property list cannot be read: it is empty"};
    }
    if (isBinaryPropertyList(bytes)) {
        try {
            return parseBinaryPropertyList(bytes);
        } catch (const Malformed& malformed) {
            return Error{EINVAL, "The property list cannot be read: " + malformed.reason + " (byte " +
                                     std::to_string(malformed.position) + ")"};
        }
    }
    std::optional<std::string> owned;
    std::string_view text = withoutByteOrderMark(bytes);
    if (utf16Order(bytes) || saysLatin1(text) || !isUtf8(text)) {
        owned = converted(bytes);
        if (!owned) {
            return Error{EINVAL, "The property list cannot be read: its text is neither UTF-8 nor UTF-16"};
        }
        text = *owned;
    }
    try {
        return parseText(text);
    } catch (const Malformed& malformed) {
        return errorFor(malformed, text);
    }
}

}  // namespace

std::variant<PropertyValue, Error> LinuxPropertyLists::parse(std::string_view bytes) {
    try {
        return parseAny(bytes);
    } catch (const std::exception&) {
        return Error{ENOMEM, "The property list cannot be read: there is not enough memory"};
    }
}

std::string LinuxPropertyLists::serialize(const PropertyValue& value) { return writeXmlPropertyList(value); }

}  // namespace platform::linux_host
