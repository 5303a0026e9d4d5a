// Text with attributes over parts of it.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace platform {

enum class TextColor { standard, blue };
enum class UnderlineStyle { none = 0, single = 1 };

struct TextRun {
    std::string text;                      // UTF-8
    std::optional<std::string> link = {};  // an address
    TextColor color = TextColor::standard;
    UnderlineStyle underline = UnderlineStyle::none;
    friend bool operator==(const TextRun&, const TextRun&) = default;
};

using AttributedString = std::vector<TextRun>;

}  // namespace platform
