#include "lib/base/Text.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "lib/base/LowercaseTable.h"

namespace kz {

namespace {

constexpr std::uint32_t replacementCharacter = 0xFFFD;

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

// The characters of the categories Z, the line breaks and the tab.
bool isWhitespaceOrNewline(std::uint32_t character) {
    switch (character) {
        case ' ':
        case 0x85:
        case 0xA0:
        case 0x1680:
        case 0x2028:
        case 0x2029:
        case 0x202F:
        case 0x205F:
        case 0x3000:
            return true;
        default:
            return (character >= '\t' && character <= '\r') || (character >= 0x2000 && character <= 0x200A);
    }
}

char lowercasedASCII(char byte) { return byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte - 'A' + 'a') : byte; }

std::uint32_t lowercasedCharacter(std::uint32_t character) {
    const auto* const after =
        std::upper_bound(std::begin(lowercaseRuns), std::end(lowercaseRuns), character,
                         [](std::uint32_t wanted, const LowercaseRun& run) { return wanted < run.first; });
    if (after == std::begin(lowercaseRuns)) {
        return character;
    }
    const LowercaseRun& run = *std::prev(after);
    if (character <= run.last && (character - run.first) % run.step == 0) {
        return static_cast<std::uint32_t>(static_cast<std::int64_t>(character) + run.offset);
    }
    return character;
}

// The length of the character that ends the text, by looking back at most three continuation bytes.
DecodedCharacter decodeLastCharacter(std::string_view text) {
    std::size_t bytes = 1;
    while (bytes < 4 && bytes < text.size() && isContinuation(text[text.size() - bytes])) {
        ++bytes;
    }
    const DecodedCharacter last = decodeCharacter(text.substr(text.size() - bytes));
    return last.bytes == bytes ? last : DecodedCharacter{};
}

}  // namespace

DecodedCharacter decodeCharacter(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text.front());
    DecodedCharacter invalid{.codePoint = lead, .bytes = 1, .valid = false};
    if (lead < 0x80) {
        return {.codePoint = lead, .bytes = 1, .valid = true};
    }
    const std::size_t bytes = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < bytes) {
        return invalid;
    }
    std::uint32_t codePoint = lead & (0xFFU >> (bytes + 1));
    for (std::size_t at = 1; at < bytes; ++at) {
        if (!isContinuation(text[at])) {
            return invalid;
        }
        codePoint = codePoint << 6U | (static_cast<unsigned char>(text[at]) & 0x3FU);
    }
    const bool overlong = (bytes == 3 && codePoint < 0x800) || (bytes == 4 && codePoint < 0x10000);
    const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    if (overlong || surrogate || codePoint > 0x10FFFF) {
        return invalid;
    }
    return {.codePoint = codePoint, .bytes = bytes, .valid = true};
}

void appendCharacter(std::string& text, std::uint32_t codePoint) {
    if (codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF)) {
        codePoint = replacementCharacter;
    }
    if (codePoint < 0x80) {
        text += static_cast<char>(codePoint);
        return;
    }
    const auto continuation = [&](unsigned shift) {
        text += static_cast<char>(0x80U | ((codePoint >> shift) & 0x3FU));
    };
    if (codePoint < 0x800) {
        text += static_cast<char>(0xC0U | (codePoint >> 6U));
    } else if (codePoint < 0x10000) {
        text += static_cast<char>(0xE0U | (codePoint >> 12U));
        continuation(6);
    } else {
        text += static_cast<char>(0xF0U | (codePoint >> 18U));
        continuation(12);
        continuation(6);
    }
    continuation(0);
}

bool isASCII(std::string_view text) {
    constexpr std::uint64_t highBits = 0x8080808080808080U;
    std::size_t at = 0;
    for (; at + sizeof(std::uint64_t) <= text.size(); at += sizeof(std::uint64_t)) {
        std::uint64_t bytes = 0;
        std::memcpy(&bytes, text.data() + at, sizeof bytes);
        if ((bytes & highBits) != 0) {
            return false;
        }
    }
    return std::all_of(text.begin() + static_cast<std::ptrdiff_t>(at), text.end(),
                       [](char byte) { return (static_cast<unsigned char>(byte) & 0x80U) == 0; });
}

bool isUTF8(std::string_view text) {
    if (isASCII(text)) {
        return true;
    }
    while (!text.empty()) {
        const DecodedCharacter character = decodeCharacter(text);
        if (!character.valid) {
            return false;
        }
        text.remove_prefix(character.bytes);
    }
    return true;
}

std::size_t lengthInUTF16(std::string_view text) {
    if (isASCII(text)) {
        return text.size();
    }
    std::size_t units = 0;
    while (!text.empty()) {
        const DecodedCharacter character = decodeCharacter(text);
        units += character.bytes == 4 ? 2 : 1;
        text.remove_prefix(character.bytes);
    }
    return units;
}

std::string_view trimWhitespaceAndNewlines(std::string_view text) {
    while (!text.empty()) {
        const DecodedCharacter first = decodeCharacter(text);
        if (!first.valid || !isWhitespaceOrNewline(first.codePoint)) {
            break;
        }
        text.remove_prefix(first.bytes);
    }
    while (!text.empty()) {
        const DecodedCharacter last = decodeLastCharacter(text);
        if (!last.valid || !isWhitespaceOrNewline(last.codePoint)) {
            break;
        }
        text.remove_suffix(last.bytes);
    }
    return text;
}

std::string lowercased(std::string_view text) {
    if (isASCII(text)) {
        std::string lower(text);
        std::ranges::transform(lower, lower.begin(), lowercasedASCII);
        return lower;
    }
    std::string lower;
    lower.reserve(text.size());
    while (!text.empty()) {
        const DecodedCharacter character = decodeCharacter(text);
        if (character.valid && character.codePoint >= 0x80) {
            appendCharacter(lower, lowercasedCharacter(character.codePoint));
        } else {
            lower += lowercasedASCII(text.front());
        }
        text.remove_prefix(character.bytes);
    }
    return lower;
}

std::string replaceAll(std::string_view text, std::string_view find, std::string_view replacement) {
    std::string result;
    result.reserve(text.size());
    std::size_t from = 0;
    while (!find.empty()) {
        const std::size_t found = text.find(find, from);
        if (found == std::string_view::npos) {
            break;
        }
        result.append(text, from, found - from).append(replacement);
        from = found + find.size();
    }
    return result.append(text, from);
}

}  // namespace kz
