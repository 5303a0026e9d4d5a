// What a script asks of bash: any text gives an answer, and what is found stands in the line that is named.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "tools/wickfield-bundle/check/BashFeatures.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string_view script(reinterpret_cast<const char*>(bytes), size);
    const auto found = wickfield_bundle::newerBashFeature(script);
    const auto lines = static_cast<std::size_t>(std::ranges::count(script, '\n')) + 1;
    if (found && (found->feature.empty() || found->line == 0 || found->line > lines)) {
        std::abort();
    }
    return 0;
}
