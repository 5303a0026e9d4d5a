// Rich text, cut into the marks that it is made of.
#pragma once

#include <optional>
#include <string_view>

namespace platform::qt {

struct RtfToken {
    enum class Kind {
        groupOpen,
        groupClose,
        word,    // text: its name; value: its number, when it has one
        symbol,  // text: the one character after the backslash
        byte,    // value: a byte written as two hexadecimal digits
        text,    // text: a run of bytes as they stand
        binary,  // text: the bytes themselves
        end,
    };
    Kind kind = Kind::end;
    std::string_view text{};
    std::optional<int> value{};
};

// Never fails: what is damaged gives the nearest sensible token, what is cut off ends there. Numbers beyond the range
// of an int stay at its end. The bytes must outlive the tokenizer and its tokens.
class RtfTokenizer {
public:
    explicit RtfTokenizer(std::string_view bytes) : m_rest(bytes) {}

    RtfToken next();

private:
    RtfToken take(RtfToken::Kind kind, std::size_t count);
    RtfToken readText();
    RtfToken readControl();
    RtfToken readHexByte();
    RtfToken readWord();
    std::optional<int> readNumber();

    std::string_view m_rest;
};

}  // namespace platform::qt
