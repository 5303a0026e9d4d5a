// HTML, cut into tags and text.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace platform::macos {

struct HtmlAttribute {
    std::string name;  // lower case
    std::string_view value;
};

struct HtmlPiece {
    enum class Kind { text, open, close, other };  // other: comments, declarations, a tag that is cut off
    Kind kind = Kind::text;
    std::string_view source;  // as it stands
    std::string name;         // of a tag, lower case
    std::vector<HtmlAttribute> attributes;

    const std::string_view* attribute(std::string_view wanted) const;  // null when there is none
};

// The source must outlive the reader and its pieces. A "<" that begins no tag is text.
class HtmlReader {
public:
    explicit HtmlReader(std::string_view html) : m_rest(html) {}

    bool atEnd() const { return m_rest.empty(); }
    HtmlPiece next();

    // What stands before the end tag of an element that holds no tags, such as a script; takes the end tag too.
    std::string_view takeRawText(const std::string& name);

private:
    HtmlPiece take(HtmlPiece::Kind kind, std::size_t length);
    HtmlPiece takeUntil(std::string_view end, std::size_t from);
    HtmlPiece takeTag(bool closing);

    std::string_view m_rest;
};

std::string lowerCase(std::string_view text);  // of A to Z

}  // namespace platform::macos
