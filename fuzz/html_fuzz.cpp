// What a page shows that lies elsewhere: any text gives an answer of limited length.
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "tools/wickfield-bundle/check/HtmlReferences.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string_view html(reinterpret_cast<const char*>(bytes), size);
    const auto references = wickfield_bundle::referencesOf(html);
    for (const auto* const found : {&references.remote, &references.pictures}) {
        if (found->size() > 1000) {
            std::abort();
        }
        for (const auto& reference : *found) {
            if (reference.empty() || reference.size() > size + 16) {
                std::abort();
            }
        }
    }
    wickfield_bundle::namesCharset(html);
    return 0;
}
