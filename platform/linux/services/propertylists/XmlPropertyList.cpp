#include "platform/linux/services/propertylists/XmlPropertyList.h"

#define XML_DTD  // NOLINT(cppcoreguidelines-macro-usage): without it the header hides the limits on entities
#include <expat.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "platform/linux/services/propertylists/Base64.h"
#include "platform/linux/services/propertylists/PropertyListReading.h"
#include "platform/linux/services/propertylists/Unicode.h"

namespace platform::linux_host {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const auto first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? text.substr(0, 0)
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool isScalar(std::string_view element) {
    static constexpr std::array<std::string_view, 7> scalars{"string", "integer", "real", "true",
                                                             "false",  "date",    "data"};
    return std::ranges::find(scalars, element) != scalars.end();
}

template <typename Kind>
std::optional<PropertyValue> wrapped(std::optional<Kind> value) {
    return value ? std::optional(PropertyValue{std::move(*value)}) : std::nullopt;
}

// None when the text is not of the form that the element asks for.
std::optional<PropertyValue> scalarFrom(std::string_view element, std::string text) {
    if (element == "string") {
        return PropertyValue{std::move(text)};
    }
    const auto content = trimmed(text);
    if (element == "integer") {
        return integerFrom(content);
    }
    if (element == "real") {
        return wrapped(realFrom(content));
    }
    if (element == "date") {
        return wrapped(dateFrom(content));
    }
    if (element == "data") {
        return wrapped(dataFromBase64(content));
    }
    return content.empty() ? std::optional(PropertyValue{element == "true"}) : std::nullopt;
}

// Builds the values while expat walks through the text. An exception must not pass through expat, which is C: the first
// one is kept, stops the walk and is thrown again after it.
class Reader {
public:
    // The text must begin with an element, an instruction or a document type, since nothing may precede a declaration.
    // Positions are counted from `beginning`.
    PropertyValue read(std::string_view text, std::size_t beginning) {
        m_beginning = beginning;
        m_budget.charge(text.size(), beginning);  // all texts of the values come out of it
        static_assert(MemoryBudget::limit <= std::numeric_limits<int>::max());
        listen();
        const bool complete = XML_Parse(m_parser.get(), text.data(), static_cast<int>(text.size()), 1) == XML_STATUS_OK;
        if (m_failure) {
            std::rethrow_exception(m_failure);
        }
        if (!complete) {
            failAsExpatDid();
        }
        if (!m_root) {
            fail("the list holds no value");
        }
        return std::move(*m_root);
    }

private:
    struct Container {
        PropertyValue value;             // an array or a dictionary
        std::optional<std::string> key;  // of a dictionary's next value
    };

    void listen() {
        auto* const parser = m_parser.get();
        if (parser == nullptr) {
            throw std::bad_alloc();
        }
        // No handler expands or loads the entities that a list declares. Expat still expands those in attributes.
        XML_SetBillionLaughsAttackProtectionMaximumAmplification(parser, mostAmplification);
        XML_SetUserData(parser, this);
        XML_SetElementHandler(parser, forward<&Reader::start>, forward<&Reader::end>);
        XML_SetCharacterDataHandler(parser, forward<&Reader::addText>);
        XML_SetProcessingInstructionHandler(parser, forward<&Reader::addCodePoint>);
        XML_SetDefaultHandler(parser, forward<&Reader::skip>);
    }

    template <auto method, typename... Arguments>
    static void forward(void* reader, Arguments... arguments) noexcept {
        auto& self = *static_cast<Reader*>(reader);
        if (self.m_failure) {
            return;  // expat may finish what it is at
        }
        try {
            (self.*method)(arguments...);
        } catch (...) {
            self.m_failure = std::current_exception();
            XML_StopParser(self.m_parser.get(), XML_FALSE);
        }
    }

    std::size_t position() const {
        return m_beginning + static_cast<std::size_t>(std::max<XML_Index>(XML_GetCurrentByteIndex(m_parser.get()), 0));
    }
    [[noreturn]] void fail(std::string reason) const { throw Malformed{std::move(reason), position()}; }

    [[noreturn]] void failAsExpatDid() const {
        const auto error = XML_GetErrorCode(m_parser.get());
        if (error == XML_ERROR_NO_MEMORY) {
            throw std::bad_alloc();
        }
        fail(error == XML_ERROR_JUNK_AFTER_DOC_ELEMENT ? "something follows the list"
                                                       : std::string("its XML is wrong: ") + XML_ErrorString(error));
    }

    void start(const XML_Char* name, const XML_Char** attributes) {
        const std::string_view element = name;
        for (; *attributes != nullptr; attributes += 2) {  // a document type can add thousands to every element
            m_budget.chargeValue(position());
        }
        if (std::exchange(m_first, false) && element == "plist") {
            return;
        }
        m_budget.chargeValue(position());
        expectPlaceFor(element);
        if (element == "dict") {
            m_open.push_back({{PropertyDictionary()}, {}});
        } else if (element == "array") {
            m_open.push_back({{PropertyArray()}, {}});
        } else if (element == "key" || isScalar(element)) {
            m_element = element;
            m_elementPosition = position();
            m_text.clear();
        } else {
            constexpr std::size_t longestName = 40;
            fail("the element \"" + std::string(element.substr(0, longestName)) + "\" is no property-list value");
        }
    }

    void expectPlaceFor(std::string_view element) const {
        if (!m_element.empty()) {
            fail("the element \"" + m_element + "\" holds another one");
        }
        if (m_open.size() >= Nesting::deepest) {
            fail("the values are nested too deeply");
        }
        if (m_open.empty() && m_root) {
            fail("something follows the list");
        }
        const bool inDictionary = !m_open.empty() && m_open.back().value.as<PropertyDictionary>() != nullptr;
        const bool needsKey = inDictionary && !m_open.back().key;
        if (needsKey != (element == "key")) {
            fail(needsKey ? "a dictionary holds something other than a key before a value" : "a value is missing");
        }
    }

    void end(const XML_Char* name) {
        const std::string_view element = name;
        if (m_element.empty()) {
            if (!m_open.empty()) {
                endContainer();
            }
            return;
        }
        m_element.clear();
        if (element == "key") {
            m_open.back().key = std::move(m_text);
        } else if (auto value = scalarFrom(element, std::move(m_text))) {
            add(std::move(*value));
        } else {
            throw Malformed{"the text of an element \"" + std::string(element) + "\" is not of that form",
                            m_elementPosition};
        }
    }

    void endContainer() {
        if (m_open.back().key) {
            fail("a value is missing");
        }
        auto value = std::move(m_open.back().value);
        m_open.pop_back();
        add(std::move(value));
    }

    void add(PropertyValue value) {
        if (m_open.empty()) {
            m_root = std::move(value);
            return;
        }
        auto& [container, key] = m_open.back();
        if (auto* const values = std::get_if<PropertyArray>(&container.value)) {
            values->push_back(std::move(value));
        } else {
            std::get<PropertyDictionary>(container.value).insert_or_assign(std::move(*key), std::move(value));
            key.reset();
        }
    }

    void addText(const XML_Char* characters, int length) {
        const std::string_view text(characters, static_cast<std::size_t>(length));
        if (!m_element.empty()) {
            m_text += text;
        } else if (!trimmed(text).empty()) {
            fail("there is text where an element should be");
        }
    }

    // What the writer makes of a character that XML has no place for. Other instructions are skipped.
    void addCodePoint(const XML_Char* instruction, const XML_Char* data) {
        const std::string_view digits = data;
        std::uint32_t value = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
        if (!m_element.empty() && instruction == std::string_view("code-point") && error == std::errc() &&
            end == digits.data() + digits.size()) {
            appendUtf8(m_text, value);
        }
    }

    // Comments, the parts of a document type, and references to entities other than XML's own.
    void skip(const XML_Char* characters, int length) {
        const std::string_view markup(characters, static_cast<std::size_t>(length));
        if (markup.starts_with('&')) {
            fail("a reference is not known");
        }
        // Expat calls itself for an entity within another, so that a long chain of them would exhaust the stack.
        if (markup == "<!ENTITY" && ++m_entities > mostEntities) {
            fail("it declares too many entities");
        }
    }

    static constexpr int mostEntities = 100;
    static constexpr float mostAmplification = 2;  // of the length of the list, once that comes to megabytes

    std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> m_parser{XML_ParserCreate("UTF-8"), &XML_ParserFree};
    std::exception_ptr m_failure;
    std::size_t m_beginning = 0;
    MemoryBudget m_budget;

    int m_entities = 0;
    bool m_first = true;
    std::optional<PropertyValue> m_root;
    std::vector<Container> m_open;  // the innermost one is last
    std::string m_element;          // the key or scalar that is open; empty when there is none
    std::size_t m_elementPosition = 0;
    std::string m_text;  // of m_element
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

PropertyValue parseXmlPropertyList(std::string_view text) {
    const auto list = trimmed(text);
    return Reader().read(list, static_cast<std::size_t>(list.data() - text.data()));
}

}  // namespace platform::linux_host
