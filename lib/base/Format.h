// Formats with the conversions %@ %s %c %i %d %u %x %X %f and %%, the length marks h l ll q z j t in front of them, and
// flags, width and precision as in %0.2f and %-5s.
//
// Arguments carry their kind, so a conversion is checked against what was handed over: a conversion that does not fit
// its argument shows the argument all the same, one that has no argument is kept as text, and so are a lone "%" at the
// end and conversions that are not named above. Numbers are shown whole, never cut to the length mark. Width and
// precision count UTF-16 units and go up to 1024. The locale plays no part. No format, however hostile, reads past its
// arguments, writes anywhere or needs more than about 1.5 KiB for an argument beyond the argument's own text.
#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include "platform/ports/Date.h"
#include "platform/ports/PropertyValue.h"

namespace kz {

// Borrows texts and values: it must not outlive the full expression that made it.
class FormatArgument {
public:
    // None stands for a missing object or text, shown as "(null)".
    using Value = std::variant<std::nullopt_t, std::string_view, std::int64_t, std::uint64_t, double, char,
                               platform::Date, const platform::PropertyValue*>;

    FormatArgument(std::nullopt_t none) : m_value(none) {}
    FormatArgument(const char* text);
    FormatArgument(const std::string& text) : m_value(std::string_view(text)) {}
    FormatArgument(std::string_view text) : m_value(text) {}
    FormatArgument(const std::optional<std::string>& text);
    FormatArgument(char character) : m_value(character) {}
    FormatArgument(bool flag) : m_value(std::int64_t{flag}) {}
    FormatArgument(std::signed_integral auto number) : m_value(static_cast<std::int64_t>(number)) {}
    FormatArgument(std::unsigned_integral auto number) : m_value(static_cast<std::uint64_t>(number)) {}
    FormatArgument(double number) : m_value(number) {}
    FormatArgument(platform::Date date) : m_value(date) {}
    FormatArgument(const platform::PropertyValue& value) : m_value(&value) {}
    FormatArgument(const std::optional<platform::PropertyValue>& value);

    const Value& value() const noexcept { return m_value; }

private:
    Value m_value;
};

std::string formatWith(std::string_view format, std::span<const FormatArgument> arguments);
void appendFormatted(std::string& text, std::string_view format, std::span<const FormatArgument> arguments);

template <typename... Arguments>
std::string format(std::string_view format, const Arguments&... arguments) {
    if constexpr (sizeof...(Arguments) == 0) {
        return formatWith(format, {});
    } else {
        const FormatArgument list[] = {FormatArgument(arguments)...};
        return formatWith(format, list);
    }
}

}  // namespace kz
