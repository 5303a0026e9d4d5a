#include "tools/wickfield-bundle/NameBytes.h"

namespace wickfield_bundle {

std::string hexadecimal(std::string_view bytes) {
    std::string digits;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        digits += {"0123456789abcdef"[byte >> 4U], "0123456789abcdef"[byte & 0x0FU]};
    }
    return digits;
}

}  // namespace wickfield_bundle
