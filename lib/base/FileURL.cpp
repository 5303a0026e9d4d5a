#include "lib/base/FileURL.h"

namespace kz {

namespace {

bool isKept(char character) {
    constexpr std::string_view marks = "-._~/!$&'()*+,=:@";
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z') ||
           (character >= '0' && character <= '9') || marks.find(character) != std::string_view::npos;
}

}  // namespace

std::string fileURLWithPath(std::string_view path) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string url = "file://";
    for (const char character : path) {
        if (isKept(character)) {
            url += character;
        } else {
            const auto byte = static_cast<unsigned char>(character);
            url += '%';
            url += digits[byte >> 4U];
            url += digits[byte & 15U];
        }
    }
    return url;
}

}  // namespace kz
