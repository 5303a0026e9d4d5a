#include "platform/linux/tools/archive/PrintableText.h"

#include "platform/linux/services/propertylists/Unicode.h"

namespace platform::linux_host {

namespace {

bool isControl(char32_t character) { return character < 0x20 || (character >= 0x7f && character < 0xa0); }

void appendAsNumbers(std::string& text, std::string_view bytes) {
    constexpr std::string_view digits = "0123456789abcdef";
    for (const char byte : bytes) {
        const auto value = static_cast<unsigned char>(byte);
        text += {'\\', 'x', digits[value >> 4U], digits[value & 15U]};
    }
}

}  // namespace

std::string printableText(std::string_view text) {
    std::string printable;
    while (!text.empty()) {
        const auto character = firstCodePoint(text);
        const std::string_view bytes = text.substr(0, character ? character->bytes : 1);
        text.remove_prefix(bytes.size());
        if (character && !isControl(character->value)) {
            printable += bytes;
        } else {
            appendAsNumbers(printable, bytes);
        }
    }
    return printable;
}

}  // namespace platform::linux_host
