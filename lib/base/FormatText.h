#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kz {

// A format, or none at all. Borrows the text.
class FormatText {
public:
    FormatText(std::nullopt_t) {}
    FormatText(const char* text) : m_text(text == nullptr ? std::nullopt : std::optional<std::string_view>(text)) {}
    FormatText(std::string_view text) : m_text(text) {}
    FormatText(const std::string& text) : m_text(text) {}
    FormatText(const std::optional<std::string>& text) : m_text(text) {}

    bool isNone() const noexcept { return !m_text; }
    std::string_view text() const noexcept { return m_text.value_or(std::string_view()); }

private:
    std::optional<std::string_view> m_text;
};

}  // namespace kz
