#include "platform/linux/services/XmlPropertyList.h"

#include <algorithm>
#include <array>
#include <optional>

#include "platform/linux/services/Base64.h"
#include "platform/linux/services/PropertyListReading.h"
#include "platform/linux/services/Unicode.h"

namespace platform::linux_host {

namespace {

constexpr std::string_view blanks = " \t\r\n";

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? std::string_view{}
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

struct Tag {
    enum class Kind { opening, closing, empty };
    Kind kind = Kind::opening;
    std::string_view name;
    std::size_t position = 0;
};

class Reader {
public:
    explicit Reader(std::string_view text) : m_text(text) {}

    PropertyValue root() {
        const Tag first = nextTag();
        PropertyValue value;
        if (first.name == "plist" && first.kind == Tag::Kind::opening) {
            value = valueOf(nextTag());
            expectClosing("plist", nextTag());
        } else {
            value = valueOf(first);
        }
        skipMisc();
        if (m_position != m_text.size()) {
            fail("something follows the list");
        }
        return value;
    }

private:
    [[noreturn]] void fail(std::string reason) const { throw Malformed{std::move(reason), m_position}; }
    [[noreturn]] static void fail(const Tag& tag, std::string reason) {
        throw Malformed{std::move(reason), tag.position};
    }

    bool startsWith(std::string_view beginning) const { return m_text.substr(m_position).starts_with(beginning); }

    void skipBlanks() { m_position = std::min(m_text.find_first_not_of(blanks, m_position), m_text.size()); }

    void skipPast(std::string_view end, const char* what) {
        const auto found = m_text.find(end, m_position);
        if (found == std::string_view::npos) {
            fail(std::string(what) + " does not end");
        }
        m_position = found + end.size();
    }

    // Quoted texts, comments and a bracketed part may hold the character that ends it.
    void skipDocumentType() {
        bool inBrackets = false;
        while (m_position < m_text.size()) {
            const char character = m_text[m_position];
            if (startsWith("<!--")) {
                skipPast("-->", "a comment");
                continue;
            }
            ++m_position;
            if (character == '"' || character == '\'') {
                skipPast(std::string_view(&character, 1), "a quoted text");
            } else if (character == '[' || character == ']') {
                inBrackets = character == '[';
            } else if (character == '>' && !inBrackets) {
                return;
            }
        }
        fail("the document type does not end");
    }

    // Blanks, comments, processing instructions and document types.
    void skipMisc() {
        for (skipBlanks(); m_position < m_text.size(); skipBlanks()) {
            if (startsWith("<!--")) {
                skipPast("-->", "a comment");
            } else if (startsWith("<?")) {
                skipPast("?>", "a processing instruction");
            } else if (startsWith("<!DOCTYPE")) {
                skipDocumentType();
            } else {
                return;
            }
        }
    }

    Tag nextTag() {
        skipMisc();
        Tag tag{.kind = Tag::Kind::opening, .name = {}, .position = m_position};
        if (m_position == m_text.size()) {
            fail("the list is cut short");
        }
        if (m_text[m_position++] != '<') {
            fail(tag, "there is text where an element should be");
        }
        if (startsWith("/")) {
            tag.kind = Tag::Kind::closing;
            ++m_position;
        }
        const std::size_t nameEnd = m_text.find_first_of(" \t\r\n/>", m_position);
        if (nameEnd == std::string_view::npos) {
            fail("the list is cut short");
        }
        tag.name = m_text.substr(m_position, nameEnd - m_position);
        m_position = nameEnd;
        while (m_position < m_text.size() && m_text[m_position] != '>') {
            const char character = m_text[m_position++];
            if (character == '"' || character == '\'') {
                skipPast(std::string_view(&character, 1), "an attribute");
            } else if (character == '<') {
                fail(tag, "an element's tag does not end");
            }
        }
        if (m_position == m_text.size()) {
            fail("the list is cut short");
        }
        if (tag.kind == Tag::Kind::opening && m_text[m_position - 1] == '/') {
            tag.kind = Tag::Kind::empty;
        }
        ++m_position;
        return tag;
    }

    static void expectClosing(std::string_view name, const Tag& tag) {
        if (tag.kind != Tag::Kind::closing || tag.name != name) {
            fail(tag, "the element \"" + std::string(name) + "\" is not closed where it should be");
        }
    }

    void appendReference(std::string& text) {
        const auto end = m_text.substr(m_position, longestReference).find(';');
        if (end == std::string_view::npos) {
            fail("a reference does not end");
        }
        const auto name = m_text.substr(m_position + 1, end - 1);
        static constexpr std::array<std::pair<std::string_view, char>, 5> known{
            {{"lt", '<'}, {"gt", '>'}, {"amp", '&'}, {"quot", '"'}, {"apos", '\''}}};
        const auto* const found = std::ranges::find(known, name, &std::pair<std::string_view, char>::first);
        if (found != known.end()) {
            text += found->second;
        } else {
            appendUtf8(text, codePointOf(name));
        }
        m_position += end + 1;
    }

    char32_t codePointOf(std::string_view name) const {
        const bool hexadecimal = name.starts_with("#x");
        const auto digits = name.substr(std::min<std::size_t>(name.size(), hexadecimal ? 2 : 1));
        if (!name.starts_with('#') || digits.empty()) {
            fail("a reference is not known");
        }
        char32_t value = 0;
        for (const char digit : digits) {
            const int number = hexDigit(digit);
            if (number < 0 || (!hexadecimal && number > 9) || value > 0x10FFFF) {
                fail("a reference to a character is no number");
            }
            value = value * (hexadecimal ? 16 : 10) + static_cast<char32_t>(number);
        }
        return value;
    }

    // The text of an element up to and with its closing tag.
    std::string textOfElement(const Tag& tag) {
        std::string text;
        if (tag.kind == Tag::Kind::empty) {
            return text;
        }
        while (true) {
            const std::size_t special = std::min(m_text.find_first_of("<&", m_position), m_text.size());
            m_budget.charge(special - m_position, m_position);
            text += m_text.substr(m_position, special - m_position);
            m_position = special;
            if (startsWith("&")) {
                appendReference(text);
            } else if (startsWith("<![CDATA[")) {
                m_position += std::string_view("<![CDATA[").size();
                const std::size_t begin = m_position;
                skipPast("]]>", "a CDATA section");
                text += m_text.substr(begin, m_position - std::string_view("]]>").size() - begin);
            } else if (startsWith("<!--")) {
                skipPast("-->", "a comment");
            } else {
                expectClosing(tag.name, nextTag());
                return text;
            }
        }
    }

    PropertyValue valueOf(const Tag& tag) {
        const Nesting nesting(m_depth, tag.position);
        m_budget.chargeValue(tag.position);
        if (tag.kind == Tag::Kind::closing) {
            fail(tag, "a value is missing");
        }
        if (tag.name == "dict") {
            return {dictionary(tag)};
        }
        if (tag.name == "array") {
            return {array(tag)};
        }
        if (tag.name == "string") {
            return {textOfElement(tag)};
        }
        if (tag.name == "true" || tag.name == "false") {
            if (!trimmed(textOfElement(tag)).empty()) {
                fail(tag, "a boolean has text");
            }
            return {tag.name == "true"};
        }
        return scalar(tag);
    }

    PropertyValue scalar(const Tag& tag) {
        const bool known = tag.name == "integer" || tag.name == "real" || tag.name == "date" || tag.name == "data";
        if (!known) {
            fail(tag, "the element \"" + std::string(tag.name.substr(0, longestName)) + "\" is no property-list value");
        }
        const std::string whole = textOfElement(tag);
        const auto text = trimmed(whole);
        std::optional<PropertyValue> value;
        if (tag.name == "integer") {
            value = integerFrom(text);
        } else if (tag.name == "real") {
            value = wrapped(realFrom(text));
        } else if (tag.name == "date") {
            value = wrapped(dateFrom(text));
        } else {
            value = wrapped(dataFromBase64(text));
        }
        if (!value) {
            fail(tag, "the text of an element \"" + std::string(tag.name) + "\" is not of that form");
        }
        return std::move(*value);
    }

    template <typename Kind>
    static std::optional<PropertyValue> wrapped(std::optional<Kind> value) {
        return value ? std::optional(PropertyValue{std::move(*value)}) : std::nullopt;
    }

    PropertyArray array(const Tag& tag) {
        PropertyArray values;
        if (tag.kind == Tag::Kind::empty) {
            return values;
        }
        Tag next = nextTag();
        for (; next.kind != Tag::Kind::closing; next = nextTag()) {
            values.push_back(valueOf(next));
        }
        expectClosing(tag.name, next);
        return values;
    }

    PropertyDictionary dictionary(const Tag& tag) {
        PropertyDictionary values;
        if (tag.kind == Tag::Kind::empty) {
            return values;
        }
        Tag next = nextTag();
        for (; next.kind != Tag::Kind::closing; next = nextTag()) {
            if (next.name != "key") {
                fail(next, "a dictionary holds something other than a key before a value");
            }
            m_budget.chargeValue(next.position);
            std::string key = textOfElement(next);
            values.insert_or_assign(std::move(key), valueOf(nextTag()));
        }
        expectClosing(tag.name, next);
        return values;
    }

    static constexpr std::size_t longestReference = 16;
    static constexpr std::size_t longestName = 40;

    std::string_view m_text;
    std::size_t m_position = 0;
    int m_depth = 0;
    MemoryBudget m_budget;
};

}  // namespace

bool isXmlPropertyList(std::string_view text) {
    static constexpr std::array<std::string_view, 11> elements{"plist", "dict", "array", "key",  "string", "integer",
                                                               "real",  "true", "false", "date", "data"};
    text = trimmed(text);
    if (!text.starts_with('<')) {
        return false;
    }
    text.remove_prefix(1);
    const auto name = text.substr(0, std::min(text.find_first_not_of("abcdefghijklmnopqrstuvwxyz"), text.size()));
    return text.starts_with('?') || text.starts_with('!') || std::ranges::find(elements, name) != elements.end();
}

PropertyValue parseXmlPropertyList(std::string_view text) { return Reader(text).root(); }

}  // namespace platform::linux_host
