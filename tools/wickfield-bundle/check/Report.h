// What a check found, for people and for programs.
#pragma once

#include <string>

#include "tools/wickfield-bundle/check/Finding.h"

namespace wickfield_bundle {

struct Totals {
    std::size_t errors = 0;
    std::size_t warnings = 0;
    std::size_t notes = 0;
};
Totals totalsOf(const Findings& findings);

// By severity, then by rule; a reason or remedy that several places in a row have is said once, behind them. Of a rule
// that finds more the first ten places are named and the others counted. Lines end at `columns`, or anywhere when that
// is 0. What could act on a terminal is escaped. `findings` are sorted as checkBundle does.
std::string textReport(const std::string& bundle, const Findings& findings, std::size_t columns);

// An object with "format" (1), "bundle", "errors", "warnings", "notes" and "findings", each of which has "severity"
// ("error", "warning" or "note"), "rule", "place", "reason" and "remedy", all of them text. In ASCII; what is not UTF-8
// in a name becomes U+FFFD, and a place that is not has its bytes in hexadecimal digits beside it, as "placeBytes".
std::string jsonReport(const std::string& bundle, const Findings& findings);

// The list of all rules.
std::string textOfRules(std::size_t columns);
std::string jsonOfRules();  // an array of objects with "rule", "severity", "meaning" and "remedy"

}  // namespace wickfield_bundle
