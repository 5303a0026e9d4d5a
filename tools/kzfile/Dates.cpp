#include "tools/kzfile/Dates.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <ctime>
#include <string_view>
#include <utility>

namespace kzfile {

namespace {

using std::chrono::seconds;

// Takes a whole number of that many digits, and the character in front of it, off the text.
bool take(std::string_view& text, std::string_view leads, std::size_t digits, int& value) {
    if (!leads.empty()) {
        if (text.empty() || leads.find(text.front()) == std::string_view::npos) {
            return false;
        }
        text.remove_prefix(1);
    }
    if (text.size() < digits || text.front() < '0' || text.front() > '9') {
        return false;
    }
    const auto [end, error] = std::from_chars(text.data(), text.data() + digits, value);
    if (error != std::errc() || end != text.data() + digits) {
        return false;
    }
    text.remove_prefix(digits);
    return true;
}

// "Z", "+01:00", "+0100" or "+01"; none when it is something else.
std::optional<seconds> offsetFrom(std::string_view text) {
    if (text == "Z") {
        return seconds{0};
    }
    const int sign = text.starts_with('-') ? -1 : 1;
    int hours = 0;
    int minutes = 0;
    if (!take(text, "+-", 2, hours)) {
        return std::nullopt;
    }
    if (!text.empty() && !take(text, text.front() == ':' ? ":" : "", 2, minutes)) {
        return std::nullopt;
    }
    if (!text.empty() || hours > 14 || minutes > 59) {
        return std::nullopt;
    }
    return sign * seconds(hours * 3600 + minutes * 60);
}

std::optional<platform::Date> dateFromSeconds(std::string_view text) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    constexpr std::int64_t latest = 4'000'000'000;  // what a date of nanoseconds holds, and then some years less
    if (text.empty() || error != std::errc() || end != text.data() + text.size() || value > latest || value < -latest) {
        return std::nullopt;
    }
    return platform::Date(seconds(value));
}

struct Fields {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
};

bool takeFields(std::string_view& text, Fields& fields) {
    if (!take(text, "", 4, fields.year) || !take(text, "-", 2, fields.month) || !take(text, "-", 2, fields.day)) {
        return false;
    }
    if (text.empty()) {
        return true;
    }
    if (!take(text, "T ", 2, fields.hour) || !take(text, ":", 2, fields.minute)) {
        return false;
    }
    return !text.starts_with(':') || take(text, ":", 2, fields.second);
}

bool exists(const Fields& fields) {
    const std::chrono::year_month_day day{std::chrono::year(fields.year),
                                          std::chrono::month(static_cast<unsigned>(fields.month)),
                                          std::chrono::day(static_cast<unsigned>(fields.day))};
    constexpr int earliest = 1850;
    constexpr int latest = 2090;
    return day.ok() && fields.year > earliest && fields.year < latest && fields.hour < 24 && fields.minute < 60 &&
           fields.second < 60;
}

}  // namespace

std::string dateText(platform::Date date) {
    const std::time_t time = std::chrono::system_clock::to_time_t(std::chrono::floor<seconds>(date));
    std::tm fields{};
    std::array<char, 64> text{};
    if (::localtime_r(&time, &fields) == nullptr ||
        std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S %z", &fields) == 0) {
        return "unknown";
    }
    return text.data();
}

std::optional<platform::Date> dateFromText(const std::string& text) {
    if (text == "now") {
        return std::chrono::system_clock::now();
    }
    if (text.starts_with('@')) {
        return dateFromSeconds(std::string_view(text).substr(1));
    }
    std::string_view rest = text;
    Fields fields;
    if (!takeFields(rest, fields) || !exists(fields)) {
        return std::nullopt;
    }
    std::tm calendar{};
    calendar.tm_year = fields.year - 1900;
    calendar.tm_mon = fields.month - 1;
    calendar.tm_mday = fields.day;
    calendar.tm_hour = fields.hour;
    calendar.tm_min = fields.minute;
    calendar.tm_sec = fields.second;
    if (rest.empty()) {
        calendar.tm_isdst = -1;
        return std::chrono::system_clock::from_time_t(std::mktime(&calendar));
    }
    if (rest.starts_with(' ')) {
        rest.remove_prefix(1);
    }
    const auto offset = offsetFrom(rest);
    return offset ? std::optional(std::chrono::system_clock::from_time_t(::timegm(&calendar)) - *offset) : std::nullopt;
}

}  // namespace kzfile
