// The words behind a benchmark's name.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>

namespace bench {

// Where the value goes that follows a word. A bool is set by its word alone; an int is 1 at least.
using OptionPlace = std::variant<std::string*, int*, std::size_t*, double*, bool*>;

// False for anything but a whole number or decimal fraction that is not below `least`.
template <typename Number>
bool readNumber(std::string_view text, Number least, Number& number) {
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    return problem == std::errc{} && end == text.data() + text.size() && number >= least;
}

inline bool readOption(std::string_view text, const OptionPlace& place) {
    return std::visit(
        [text](auto* value) {
            using Value = std::remove_pointer_t<decltype(value)>;
            if constexpr (std::is_same_v<Value, std::string>) {
                *value = text;
                return !text.empty();
            } else if constexpr (std::is_same_v<Value, bool>) {
                return *value = true;
            } else {
                return readNumber(text, std::is_same_v<Value, int> ? Value{1} : Value{0}, *value);
            }
        },
        place);
}

// Fills in what is given on the command line; a word that is none of them, or a value that is no such, ends the program
// with the usage.
inline void readOptions(int argc, char** argv, const char* usage, const std::map<std::string, OptionPlace>& places) {
    for (int at = 1; at < argc; ++at) {
        const auto place = places.find(argv[at]);
        const bool isKnown = place != places.end();
        const bool takesValue = isKnown && !std::holds_alternative<bool*>(place->second);
        if (!isKnown || !readOption(!takesValue ? "" : at + 1 < argc ? argv[++at] : "", place->second)) {
            std::fprintf(stderr, "usage: %s\n", usage);
            std::exit(2);
        }
    }
}

}  // namespace bench
