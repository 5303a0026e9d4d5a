#include "platform/linux/services/ConsoleText.h"

#include "platform/linux/services/propertylists/Unicode.h"

namespace platform::linux_host {

namespace {

void appendHex(std::string& text, char32_t value, int digits) {
    for (int digit = digits - 1; digit >= 0; --digit) {
        text += "0123456789ABCDEF"[(value >> (4U * static_cast<unsigned>(digit))) & 0x0FU];
    }
}

bool isControl(char32_t value) { return value < 0x20 || (value >= 0x7F && value < 0xA0); }

// Line and paragraph separator, and the marks, overrides and isolates of the writing direction.
bool changesTheLine(char32_t value) {
    return value == 0x061C || value == 0x200E || value == 0x200F || (value >= 0x2028 && value <= 0x202E) ||
           (value >= 0x2066 && value <= 0x2069);
}

void appendShown(std::string& text, char32_t value, std::string_view bytes) {
    if (value == '\n') {
        text += "\\n";
    } else if (value == '\t') {
        text += "\\t";
    } else if (value == '\r') {
        text += "\\r";
    } else if (isControl(value)) {
        text += "\\x";
        appendHex(text, value, 2);
    } else if (changesTheLine(value)) {
        text += "\\u";
        appendHex(text, value, 4);
    } else {
        text += bytes;
    }
}

}  // namespace

std::string consoleLine(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    while (!text.empty()) {
        const auto point = firstCodePoint(text);
        const std::size_t bytes = point ? point->bytes : 1;
        if (point) {
            appendShown(line, point->value, text.substr(0, bytes));
        } else {
            line += "\\x";
            appendHex(line, static_cast<unsigned char>(text.front()), 2);
        }
        text.remove_prefix(bytes);
    }
    return line;
}

}  // namespace platform::linux_host
