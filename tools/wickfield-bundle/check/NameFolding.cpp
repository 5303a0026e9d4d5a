#include "tools/wickfield-bundle/check/NameFolding.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace wickfield_bundle {

namespace {

std::string mapped(std::string_view name, int options) {
    utf8proc_uint8_t* result = nullptr;
    const utf8proc_ssize_t length =
        utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(name.data()), static_cast<utf8proc_ssize_t>(name.size()),
                     &result, static_cast<utf8proc_option_t>(options));
    const std::unique_ptr<utf8proc_uint8_t, void (*)(void*)> owned(result, std::free);
    return length < 0 ? std::string(name) : std::string(result, result + length);
}

}  // namespace

bool isASCII(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string foldedName(std::string_view name) {
    if (!isASCII(name)) {
        return mapped(name, UTF8PROC_STABLE | UTF8PROC_DECOMPOSE | UTF8PROC_CASEFOLD);
    }
    std::string folded(name);
    std::ranges::transform(folded, folded.begin(),
                           [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return folded;
}

std::string decomposedName(std::string_view name) {
    return isASCII(name) ? std::string(name) : mapped(name, UTF8PROC_STABLE | UTF8PROC_DECOMPOSE);
}

}  // namespace wickfield_bundle
