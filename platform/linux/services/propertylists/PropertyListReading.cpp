#include "platform/linux/services/propertylists/PropertyListReading.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>

namespace platform::linux_host {

namespace {

using Seconds = std::chrono::duration<std::int64_t>;

Date saturated(std::int64_t secondsSince1970, std::int64_t nanoseconds) {
    constexpr auto last = std::chrono::duration_cast<Seconds>(Date::duration::max()).count() - 1;
    if (secondsSince1970 >= last) {
        return Date::max();
    }
    if (secondsSince1970 <= -last) {
        return Date::min();
    }
    return Date(
        std::chrono::duration_cast<Date::duration>(Seconds(secondsSince1970) + std::chrono::nanoseconds(nanoseconds)));
}

// The digits at the beginning of the text, which they are taken from; none when there are not that many or the text
// does not go on with `after`.
std::optional<int> takeNumber(std::string_view& text, std::size_t digits, char after) {
    if (text.size() <= digits || text[digits] != after) {
        return std::nullopt;
    }
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + digits, number);
    if (error != std::errc() || end != text.data() + digits || text.front() == '-') {
        return std::nullopt;
    }
    text.remove_prefix(digits + 1);
    return number;
}

std::optional<int> takeYear(std::string_view& text) {
    const bool negative = text.starts_with('-');
    text.remove_prefix(negative ? 1 : 0);
    const auto digits = text.find('-');
    if (digits == std::string_view::npos || digits < 4 || digits > 6) {
        return std::nullopt;
    }
    const auto year = takeNumber(text, digits, '-');
    return year && negative ? -*year : year;
}

bool takeSign(std::string_view& text) {
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    return negative;
}

}  // namespace

int hexDigit(char character) {
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    if (character >= 'a' && character <= 'f') {
        return character - 'a' + 10;
    }
    return character >= 'A' && character <= 'F' ? character - 'A' + 10 : -1;
}

std::optional<PropertyValue> integerFrom(std::string_view text) {
    const bool negative = takeSign(text);
    const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
    const int base = hexadecimal ? 16 : 10;
    text.remove_prefix(hexadecimal ? 2 : 0);

    std::uint64_t magnitude = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude, base);
    if (error == std::errc::invalid_argument || end != text.data() + text.size()) {
        return std::nullopt;
    }
    const std::uint64_t largest = std::uint64_t{std::numeric_limits<std::int64_t>::max()} + (negative ? 1 : 0);
    if (error == std::errc() && magnitude <= largest) {
        return PropertyValue{static_cast<std::int64_t>(negative ? ~magnitude + 1 : magnitude)};
    }
    double real = std::numeric_limits<double>::infinity();  // left alone when it is larger than any real
    std::from_chars(text.data(), text.data() + text.size(), real,
                    hexadecimal ? std::chars_format::hex : std::chars_format::fixed);
    return PropertyValue{negative ? -real : real};
}

std::optional<double> realFrom(std::string_view text) {
    const bool negative = takeSign(text);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || text.starts_with('-')) {
        return std::nullopt;
    }
    return negative ? -value : value;
}

std::optional<Date> dateFrom(std::string_view text) {
    const auto year = takeYear(text);
    const auto month = year ? takeNumber(text, 2, '-') : std::nullopt;
    const auto day = month ? takeNumber(text, 2, 'T') : std::nullopt;
    const auto hour = day ? takeNumber(text, 2, ':') : std::nullopt;
    const auto minute = hour ? takeNumber(text, 2, ':') : std::nullopt;
    const auto second = minute ? takeNumber(text, 2, 'Z') : std::nullopt;
    if (!second || !text.empty() || *hour > 23 || *minute > 59 || *second > 60) {
        return std::nullopt;
    }
    constexpr int furthestYear = 32000;
    const std::chrono::year_month_day date{std::chrono::year(std::clamp(*year, -furthestYear, furthestYear)),
                                           std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok()) {
        return std::nullopt;
    }
    const Seconds days = std::chrono::sys_days(date).time_since_epoch();
    return saturated(days.count() + (*hour * 60LL + *minute) * 60 + *second, 0);
}

Date dateFromSecondsSince2001(double seconds) {
    constexpr double from1970To2001 = 978307200;
    const double since1970 = std::isnan(seconds) ? 0 : seconds + from1970To2001;
    constexpr double limit = 1e11;  // seconds; beyond every date that Date can hold
    const double whole = std::floor(std::clamp(since1970, -limit, limit));
    const double fraction = std::clamp(since1970 - whole, 0.0, 1.0);
    return saturated(static_cast<std::int64_t>(whole), static_cast<std::int64_t>(fraction * 1e9));
}

std::string textOf(Date date) {
    // In seconds: the beginning of the first day is beyond what Date can hold.
    const auto seconds = std::chrono::floor<std::chrono::seconds>(date);
    const auto days = std::chrono::floor<std::chrono::days>(seconds);
    const std::chrono::year_month_day day(days);
    const std::chrono::hh_mm_ss time(seconds - days);
    std::array<char, 64> text{};
    const int length =
        std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", int{day.year()},
                      unsigned{day.month()}, unsigned{day.day()}, static_cast<int>(time.hours().count()),
                      static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
    return {text.data(), static_cast<std::size_t>(length)};
}

}  // namespace platform::linux_host
