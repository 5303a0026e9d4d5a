// What a rule is.
#pragma once

#include <string_view>

#include "tools/wickfield-bundle/check/Finding.h"

namespace wickfield_bundle {

struct Rule {
    std::string_view name;     // lower-case words with "-" between them; never changes its meaning
    Severity severity;         // of all that it finds
    std::string_view meaning;  // one sentence for the list of rules
    std::string_view remedy;   // one sentence; "" where there is nothing to do
};

}  // namespace wickfield_bundle
