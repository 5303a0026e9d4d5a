#include "tools/wickfield-bundle/check/NameFolding.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

#include "lib/base/Text.h"

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

std::string foldedName(std::string_view name) {
    if (!kz::isASCII(name)) {
        return mapped(name, UTF8PROC_STABLE | UTF8PROC_DECOMPOSE | UTF8PROC_CASEFOLD);
    }
    std::string folded(name);
    std::ranges::transform(folded, folded.begin(), lowered);
    return folded;
}

std::string decomposedName(std::string_view name) {
    return kz::isASCII(name) ? std::string(name) : mapped(name, UTF8PROC_STABLE | UTF8PROC_DECOMPOSE);
}

}  // namespace wickfield_bundle
