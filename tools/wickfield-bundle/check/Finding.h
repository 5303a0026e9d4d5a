// What a check has to say about a bundle.
#pragma once

#include <string>
#include <vector>

namespace wickfield_bundle {

// An error: the installation fails, or puts something wrong on the customer's disk. A warning: it does on some hosts,
// for some customers, or looks like an oversight. A note: worth knowing, such as sizes.
enum class Severity { note, warning, error };

struct Finding {
    Severity severity = Severity::note;
    std::string rule;    // what scripts go by, such as "agreement-missing"; never changes its meaning
    std::string place;   // the item's path from the bundle's own folder; "" for the bundle itself
    std::string reason;  // one sentence
    std::string remedy;  // one sentence; "" where there is nothing to do
};

using Findings = std::vector<Finding>;

}  // namespace wickfield_bundle
