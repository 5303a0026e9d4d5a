#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>

#include "platform/linux/services/propertylists/Base64.h"
#include "platform/linux/services/propertylists/PropertyListReading.h"
#include "platform/linux/services/propertylists/Unicode.h"
#include "platform/linux/services/propertylists/XmlPropertyList.h"

namespace platform::linux_host {

namespace {

class Writer {
public:
    std::string document(const PropertyValue& root) {
        m_text =
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
            "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
            "<plist version=\"1.0\">\n";
        write(root);
        m_text += "</plist>\n";
        return std::move(m_text);
    }

private:
    void write(const PropertyValue& value) {
        std::visit([this](const auto& kind) { write(kind); }, value.value);
    }

    void write(const std::string& text) { element("string", text); }
    void write(std::int64_t number) { element("integer", std::to_string(number)); }
    void write(bool flag) { line(flag ? "<true/>" : "<false/>"); }
    void write(Date date) { element("date", textOf(date)); }
    void write(const PropertyData& data) { element("data", base64(data)); }

    void write(double number) {
        if (!std::isfinite(number)) {
            element("real", std::isnan(number) ? "nan" : number < 0 ? "-infinity" : "+infinity");
            return;
        }
        std::array<char, 32> text{};
        const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
        element("real", {text.data(), static_cast<std::size_t>(end - text.data())});
    }

    void write(const PropertyArray& values) {
        if (values.empty()) {
            line("<array/>");
            return;
        }
        line("<array>");
        ++m_indent;
        for (const auto& value : values) {
            write(value);
        }
        --m_indent;
        line("</array>");
    }

    void write(const PropertyDictionary& values) {
        if (values.empty()) {
            line("<dict/>");
            return;
        }
        line("<dict>");
        ++m_indent;
        for (const auto& [key, value] : values) {
            element("key", key);
            write(value);
        }
        --m_indent;
        line("</dict>");
    }

    void line(std::string_view content) {
        m_text.append(m_indent, '\t');
        m_text += content;
        m_text += '\n';
    }

    void element(std::string_view name, std::string_view content) {
        m_text.append(m_indent, '\t');
        m_text.append("<").append(name).append(">");
        appendEscaped(content);
        m_text.append("</").append(name).append(">\n");
    }

    void appendEscaped(std::string_view content) {
        while (!content.empty()) {
            const auto point = firstCodePoint(content);
            const std::size_t bytes = point ? point->bytes : 1;
            if (!point) {
                appendUtf8(m_text, replacementForMalformed);
            } else if (!isOfXml(point->value)) {
                m_text += "<?code-point " + std::to_string(static_cast<unsigned>(point->value)) + "?>";
            } else if (point->value == '<') {
                m_text += "&lt;";
            } else if (point->value == '>') {
                m_text += "&gt;";
            } else if (point->value == '&') {
                m_text += "&amp;";
            } else if (point->value == '\r') {
                m_text += "&#13;";  // by itself it would be read as a new line
            } else {
                m_text += content.substr(0, bytes);
            }
            content.remove_prefix(bytes);
        }
    }

    static bool isOfXml(char32_t point) {
        return point >= 0x20 ? point != 0xFFFE && point != 0xFFFF : point == '\t' || point == '\n' || point == '\r';
    }

    static constexpr char32_t replacementForMalformed = 0xFFFD;
    std::string m_text;
    std::size_t m_indent = 0;
};

}  // namespace

std::string writeXmlPropertyList(const PropertyValue& value) { return Writer().document(value); }

}  // namespace platform::linux_host
