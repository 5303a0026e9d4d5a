#include "tools/wickfield-bundle/check/ReportText.h"

#include <utf8proc.h>

#include <algorithm>

#include "lib/base/Text.h"

namespace wickfield_bundle {

std::size_t columnsOf(std::string_view text) {
    std::size_t width = 0;
    while (!text.empty()) {
        const kz::DecodedCharacter character = kz::decodeCharacter(text);
        const int columns =
            character.valid ? utf8proc_charwidth(static_cast<utf8proc_int32_t>(character.codePoint)) : 1;
        width += static_cast<std::size_t>(std::max(columns, 0));
        text.remove_prefix(character.bytes);
    }
    return width;
}

std::string paragraph(std::string_view text, std::size_t indent, std::size_t columns) {
    const std::string margin(indent, ' ');
    std::string lines;
    std::size_t used = 0;  // columns of the line that is being filled; 0: it is not begun
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(' '), text.size());
        const std::string_view word = text.substr(0, end);
        const std::size_t width = columnsOf(word);
        if (used == 0) {
            lines.append(margin);
            used = indent + width;
        } else if (columns == 0 || used + 1 + width <= columns) {
            lines.append(" ");
            used += 1 + width;
        } else {
            lines.append("\n").append(margin);
            used = indent + width;
        }
        lines.append(word);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines + '\n';
}

}  // namespace wickfield_bundle
