#include "platform/macos/foundation/Utf8.h"

#include <cstddef>

namespace platform::macos {

namespace {

constexpr const char* replacement = "\xEF\xBF\xBD";

bool isTrail(unsigned char byte) { return (byte & 0xC0U) == 0x80U; }

std::size_t lengthByLead(unsigned char lead) {
    if (lead < 0x80U) {
        return 1;
    }
    if (lead >= 0xC2U && lead <= 0xDFU) {
        return 2;
    }
    if ((lead & 0xF0U) == 0xE0U) {
        return 3;
    }
    return lead >= 0xF0U && lead <= 0xF4U ? 4 : 0;
}

// Overlong forms, surrogates and what lies beyond the last character show in the second byte.
bool isAllowedSecond(unsigned char lead, unsigned char second) {
    switch (lead) {
        case 0xE0U:
            return second >= 0xA0U;
        case 0xEDU:
            return second < 0xA0U;
        case 0xF0U:
            return second >= 0x90U;
        case 0xF4U:
            return second < 0x90U;
        default:
            return true;
    }
}

// The length of the well-formed sequence at the place; 0 when there is none.
std::size_t sequenceAt(const std::string& text, std::size_t place) {
    const auto byteAt = [&text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const std::size_t length = lengthByLead(byteAt(place));
    if (length == 0 || length > text.size() - place) {
        return 0;
    }
    for (std::size_t index = 1; index < length; ++index) {
        if (!isTrail(byteAt(place + index))) {
            return 0;
        }
    }
    return length > 1 && !isAllowedSecond(byteAt(place), byteAt(place + 1)) ? 0 : length;
}

}  // namespace

std::string repairedUtf8(const std::string& text) {
    std::string repaired;
    repaired.reserve(text.size());
    for (std::size_t place = 0; place < text.size();) {
        const std::size_t length = sequenceAt(text, place);
        if (length == 0) {
            repaired += replacement;
            ++place;
        } else {
            repaired.append(text, place, length);
            place += length;
        }
    }
    return repaired;
}

}  // namespace platform::macos
