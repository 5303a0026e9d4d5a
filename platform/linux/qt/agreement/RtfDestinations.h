// Where the contents of a group of rich text belong.
#pragma once

#include <optional>
#include <string_view>

namespace platform::qt {

enum class RtfDestination {
    body,
    note,  // a footnote: body, but no paragraphs of its own
    skipped,
    fontTable,
    colorTable,
    lists,
    levelText,
    instruction,
    bookmark,
    picture,
    attachment,
    shape,  // skipped, except for the text that it carries
};

// None for a word that begins no destination of its own.
std::optional<RtfDestination> destinationOfWord(std::string_view word);

}  // namespace platform::qt
