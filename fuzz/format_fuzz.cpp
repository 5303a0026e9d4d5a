// Formats with arguments of every kind, the log's escaping, and the texts and paths that go through them.
#include <fuzzer/FuzzedDataProvider.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "lib/KZLog.h"
#include "lib/base/Format.h"
#include "lib/base/PathText.h"
#include "lib/base/PropertyText.h"
#include "lib/base/Text.h"

namespace {

// What a conversion may add to the text of its argument.
constexpr std::size_t roomPerArgument = 1536;

void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

kz::FormatArgument argument(FuzzedDataProvider& input, const std::string& text, const platform::PropertyValue& value) {
    switch (input.ConsumeIntegralInRange(0, 8)) {
        case 0:
            return text;
        case 1:
            return input.ConsumeIntegral<std::int64_t>();
        case 2:
            return input.ConsumeIntegral<std::uint64_t>();
        case 3:
            return input.ConsumeFloatingPoint<double>();
        case 4:
            return input.ConsumeIntegral<char>();
        case 5:
            return platform::Date(std::chrono::seconds(input.ConsumeIntegralInRange(-9000000000, 9000000000)));
        case 6:
            return value;
        case 7:
            return input.ConsumeBool();
        default:
            return std::nullopt;
    }
}

void checkFormats(FuzzedDataProvider& input) {
    const std::string text = input.ConsumeRandomLengthString();
    const platform::PropertyValue value{.value = platform::PropertyArray{{.value = text}}};
    std::vector<kz::FormatArgument> arguments;
    const int count = input.ConsumeIntegralInRange(0, 6);
    for (int number = 0; number < count; ++number) {
        arguments.push_back(argument(input, text, value));
    }
    const std::string format = input.ConsumeRandomLengthString();
    const std::size_t longest = arguments.size() * (roomPerArgument + 2 * text.size());
    require(kz::formatWith(format, arguments).size() <= format.size() + longest);

    const std::string escaped = KZLog::escapeTextForLogging(format);
    require(format.find('%') != std::string::npos || escaped == format);
    require(kz::formatWith(escaped, arguments).size() <= escaped.size() + longest);
}

void checkTexts(const std::string& text) {
    require(kz::lengthInUTF16(text) <= text.size());
    require(kz::lengthInUTF16(kz::lowercased(text)) == kz::lengthInUTF16(text));
    const std::string_view trimmed = kz::trimWhitespaceAndNewlines(text);
    require(kz::trimWhitespaceAndNewlines(trimmed) == trimmed);
    require(text.find(trimmed) != std::string::npos);
    (void)kz::boolValue({.value = text});
}

void checkPaths(const std::string& path) {
    const std::string last = kz::lastPathComponent(path);
    require(last == "/" || last.find('/') == std::string::npos);
    const std::string standard = kz::appendPathComponent(path, "");
    require(kz::appendPathComponent(kz::deletingLastPathComponent(path), last) == standard);
    const std::string extension = kz::pathExtension(path);
    require(extension.empty() || kz::appendPathExtension(kz::deletingPathExtension(path), extension) == standard);
    std::string joined;
    for (const std::string& component : kz::pathComponents(path)) {
        joined = kz::appendPathComponent(joined, component);
    }
    require(joined == standard);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider input(data, size);
    checkFormats(input);
    const std::string text = input.ConsumeRandomLengthString();
    checkTexts(text);
    checkPaths(text);
    return 0;
}
