// What the readers of the three forms of a property list share. A list may come from anywhere, so each of them bounds
// how deep it nests and how much memory it takes.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/ports/Date.h"
#include "platform/ports/PropertyValue.h"

namespace platform::linux_host {

// Thrown inside of the readers only.
struct Malformed {
    std::string reason;        // a clause, such as "a dictionary's value is missing"
    std::size_t position = 0;  // bytes from the beginning
};

// What one list may take in memory. A small binary list can otherwise name one large string a million times.
class MemoryBudget {
public:
    static constexpr std::size_t limit = std::size_t{1} << 28U;  // bytes
    static constexpr std::size_t perValue = 256;

    void charge(std::size_t bytes, std::size_t position) {
        if (bytes > m_left) {
            throw Malformed{"the list takes more memory than a list may", position};
        }
        m_left -= bytes;
    }
    void chargeValue(std::size_t position) { charge(perValue, position); }

private:
    std::size_t m_left = limit;
};

// One level deeper for as long as it lives.
class Nesting {
public:
    static constexpr int deepest = 512;

    Nesting(int& depth, std::size_t position) : m_depth(depth) {
        if (m_depth >= deepest) {
            throw Malformed{"the values are nested too deeply", position};
        }
        ++m_depth;
    }
    ~Nesting() { --m_depth; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

private:
    int& m_depth;
};

int hexDigit(char character);  // -1 when it is none

// Decimal, or hexadecimal after "0x", with an optional sign. One that 64 signed bits cannot hold becomes a real; none
// when the text is no integer.
std::optional<PropertyValue> integerFrom(std::string_view text);

// Digits with point and exponent, "nan", "inf" or "infinity" in any case, with an optional sign; whatever the locale.
std::optional<double> realFrom(std::string_view text);

// "2026-11-21T01:15:00Z". A date that Date cannot hold (before 1678 or after 2261) becomes the nearest that it can.
std::optional<Date> dateFrom(std::string_view text);
Date dateFromSecondsSince2001(double seconds);
std::string textOf(Date date);  // whole seconds

}  // namespace platform::linux_host
