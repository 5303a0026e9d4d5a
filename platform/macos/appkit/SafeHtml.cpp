#include "platform/macos/appkit/SafeHtml.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <set>
#include <string_view>

#include "platform/macos/appkit/HtmlPieces.h"

namespace platform::macos {

namespace {

using Names = std::set<std::string_view>;

constexpr auto none = std::string_view::npos;
constexpr std::uint32_t firstPrintable = 0xA0;  // beyond ASCII; a number below it would be read as another character
constexpr std::string_view alphanumeric = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";

const Names& elements() {
    static const Names names{"p",       "br",      "hr",         "div",      "span",   "h1",    "h2",      "h3",
                             "h4",      "h5",      "h6",         "b",        "i",      "u",     "s",       "em",
                             "tt",      "strong",  "strike",     "small",    "big",    "sub",   "sup",     "code",
                             "kbd",     "samp",    "var",        "pre",      "q",      "cite",  "dfn",     "abbr",
                             "ins",     "del",     "blockquote", "mark",     "ul",     "ol",    "li",      "dl",
                             "dt",      "dd",      "table",      "tr",       "td",     "th",    "thead",   "tbody",
                             "tfoot",   "caption", "col",        "colgroup", "center", "font",  "address", "section",
                             "article", "header",  "footer",     "main",     "nav",    "aside", "a"};
    return names;
}

const Names& attributes() {
    static const Names names{"align",   "valign", "dir",    "lang",   "class",       "id",          "hidden", "start",
                             "type",    "value",  "width",  "border", "cellpadding", "cellspacing", "size",   "color",
                             "bgcolor", "face",   "nowrap", "style",  "colspan",     "rowspan"};
    return names;
}

// They hold text only, whatever it looks like.
const Names& rawTextElements() {
    static const Names names{"script", "style", "title", "textarea", "xmp", "iframe", "noembed", "noframes"};
    return names;
}

bool consistsOf(std::string_view text, std::string_view more) {
    return std::ranges::all_of(text, [more](char c) { return alphanumeric.find(c) != none || more.find(c) != none; });
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\n\r\f");
    return first == none ? std::string_view() : text.substr(first, text.find_last_not_of(" \t\n\r\f") - first + 1);
}

// Neither "(" nor "@" nor a backslash, without which no style names an address.
bool isInert(std::string_view style) { return consistsOf(style, " \t\r\n.,;:%#+-_*>!{}[]="); }

// The declarations of an element's own style, or the rules of a sheet, that are inert; each ends with that character.
std::string inertParts(std::string_view style, char end) {
    std::string kept;
    while (!style.empty()) {
        const std::string_view part = style.substr(0, style.find(end));
        style.remove_prefix(std::min(part.size() + 1, style.size()));
        if (isInert(part) && !trimmed(part).empty()) {
            kept += part;
            kept += end;
        }
    }
    return kept;
}

std::string withoutComments(std::string_view sheet) {
    std::string text;
    while (!sheet.empty()) {
        const auto begin = sheet.find("/*");
        text += sheet.substr(0, begin);
        const auto end = begin == none ? none : sheet.find("*/", begin + 2);
        sheet = end == none ? std::string_view() : sheet.substr(end + 2);
    }
    return text;
}

bool leadsOutside(std::string_view address) {
    constexpr std::array<std::string_view, 3> schemes{"https:", "http:", "mailto:"};
    const std::string begin = lowerCase(address.substr(0, 8));
    return std::ranges::any_of(schemes, [&begin](std::string_view scheme) { return begin.starts_with(scheme); }) &&
           consistsOf(address, "-._~:/?#[]@!$&'()*+,;=%");
}

// "image/png" for "name.png"; empty for what is no picture or no plain name.
std::string_view kindOfPicture(std::string_view name) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 4> kinds{
        {{".png", "image/png"}, {".jpg", "image/jpeg"}, {".jpeg", "image/jpeg"}, {".gif", "image/gif"}}};
    if (name.starts_with('.') || !consistsOf(name, " ._-")) {
        return {};
    }
    const std::string lowered = lowerCase(name);
    for (const auto& [extension, kind] : kinds) {
        if (lowered.ends_with(extension)) {
            return kind;
        }
    }
    return {};
}

bool isCarriedPicture(std::string_view address) {
    constexpr std::array<std::string_view, 3> begins{"data:image/png;base64,", "data:image/jpeg;base64,",
                                                     "data:image/gif;base64,"};
    return std::ranges::any_of(begins, [address](std::string_view begin) {
        return address.starts_with(begin) && consistsOf(address.substr(begin.size()), "+/=\r\n");
    });
}

class Page {
public:
    Page(std::string_view html, const PictureBeside& pictureBeside) : m_reader(html), m_pictureBeside(pictureBeside) {}

    std::string made() {
        while (!m_reader.atEnd()) {
            const HtmlPiece piece = m_reader.next();
            if (piece.kind == HtmlPiece::Kind::text) {
                addText(piece.source);
            } else if (piece.kind == HtmlPiece::Kind::close && elements().contains(piece.name)) {
                m_html += "</" + piece.name + ">";
            } else if (piece.kind == HtmlPiece::Kind::open) {
                addElement(piece);
            }
        }
        return "<!DOCTYPE html><html><head><meta charset=\"utf-8\"></head><body>" + m_html + "</body></html>";
    }

private:
    void addElement(const HtmlPiece& piece) {
        if (rawTextElements().contains(piece.name)) {
            addRawText(piece.name);
        } else if (piece.name == "img") {
            addPicture(piece);
        } else if (elements().contains(piece.name)) {
            m_html += '<' + piece.name;
            for (const HtmlAttribute& attribute : piece.attributes) {
                addAttribute(piece.name, attribute);
            }
            m_html += '>';
        }
    }

    void addAttribute(const std::string& element, const HtmlAttribute& attribute) {
        const std::string_view value = trimmed(attribute.value);
        if (element == "a" && attribute.name == "href") {
            if (leadsOutside(value)) {
                add(attribute.name, value);
            }
        } else if (attribute.name == "style") {
            add(attribute.name, inertParts(value, ';'));
        } else if (attribute.name == "colspan" || attribute.name == "rowspan") {
            if (value.size() <= 2) {  // each column costs layout time, whether there is anything in it or not
                addInert(attribute.name, value);
            }
        } else if (attributes().contains(attribute.name)) {
            addInert(attribute.name, value);
        }
    }

    void addInert(std::string_view name, std::string_view value) {
        if (isInert(value)) {
            add(name, value);
        }
    }

    void add(std::string_view name, std::string_view value) {
        m_html.append(" ").append(name).append("=\"").append(value).append("\"");
    }

    void addPicture(const HtmlPiece& piece) {
        const auto* const source = piece.attribute("src");
        const std::string address(source != nullptr ? trimmed(*source) : std::string_view());
        const std::string_view kind = kindOfPicture(address);
        const std::string beside = kind.empty() || !m_pictureBeside ? std::string() : m_pictureBeside(address);
        if (!isCarriedPicture(address) && !consistsOfPicture(beside)) {
            if (const auto* const description = piece.attribute("alt")) {
                addText(*description);
            }
            return;
        }
        m_html += "<img";
        add("src", beside.empty() ? address : "data:" + std::string(kind) + ";base64," + beside);
        for (const std::string_view side : {"width", "height"}) {
            const auto* const length = piece.attribute(side);
            if (length != nullptr && length->size() <= 4) {
                addInert(side, *length);
            }
        }
        m_html += '>';
    }

    static bool consistsOfPicture(std::string_view base64) { return !base64.empty() && consistsOf(base64, "+/=\r\n"); }

    void addRawText(const std::string& name) {
        const std::string_view text = m_reader.takeRawText(name);
        if (name == "style") {
            m_html += "<style>" + inertParts(withoutComments(text), '}') + "</style>";
        } else if (name == "textarea" || name == "xmp") {
            m_html += "<pre>";
            addText(text);
            m_html += "</pre>";
        }
    }

    // The text is UTF-8.
    void addText(std::string_view text) {
        std::uint32_t character = 0;
        int rest = 0;  // bytes that still belong to the character
        for (const char c : text) {
            const auto byte = static_cast<unsigned char>(c);
            if (byte < 0x80) {
                addAscii(c);
            } else if (byte < 0xC0) {
                character = (character << 6) | (byte & 0x3FU);
                if (--rest == 0 && character >= firstPrintable) {
                    m_html += "&#" + std::to_string(character) + ";";
                }
            } else {
                rest = byte < 0xE0 ? 1 : byte < 0xF0 ? 2 : 3;
                character = byte & (0x3FU >> static_cast<unsigned>(rest));
            }
        }
    }

    void addAscii(char c) {
        if (c == '<') {
            m_html += "&lt;";
        } else if (c == '>') {
            m_html += "&gt;";
        } else if (c >= ' ' || c == '\n' || c == '\t' || c == '\r') {
            m_html += c;
        }
    }

    HtmlReader m_reader;
    const PictureBeside& m_pictureBeside;
    std::string m_html;
};

}  // namespace

std::string safeHtml(const std::string& utf8, const PictureBeside& pictureBeside) {
    return Page(utf8, pictureBeside).made();
}

}  // namespace platform::macos
