// Control words of rich text that change the style of what follows.
#pragma once

#include <optional>
#include <string_view>

#include "platform/linux/qt/agreement/RtfModel.h"

namespace platform::qt {

// Each answers whether the word is one of its own. A missing value means what it means for that word: on for a switch,
// nothing for a length.
bool applyCharacterWord(RtfCharacterStyle& style, std::string_view word, std::optional<int> value);
bool applyParagraphWord(RtfParagraphStyle& style, std::string_view word, std::optional<int> value);

// The character that a word stands for; a null character when it stands for none.
QChar characterOfWord(std::string_view word);

}  // namespace platform::qt
