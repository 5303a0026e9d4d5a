#include "tools/wickfield-bundle/NameBytes.h"

#include "lib/base/Text.h"

namespace wickfield_bundle {

bool isUTF8(std::string_view text) {
    while (!text.empty()) {
        const kz::DecodedCharacter character = kz::decodeCharacter(text);
        if (!character.valid) {
            return false;
        }
        text.remove_prefix(character.bytes);
    }
    return true;
}

std::string hexadecimal(std::string_view bytes) {
    std::string digits;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        digits += {"0123456789abcdef"[byte >> 4U], "0123456789abcdef"[byte & 0x0FU]};
    }
    return digits;
}

}  // namespace wickfield_bundle
