#include "tools/wickfield-bundle/check/Rules.h"

#include <algorithm>

namespace wickfield_bundle {

std::vector<Rule> allRules() {
    std::vector<Rule> rules(ruleTable.begin(), ruleTable.end());
    rules.insert(rules.end(), contentRuleTable.begin(), contentRuleTable.end());
    std::ranges::sort(rules, {}, &Rule::name);
    return rules;
}

}  // namespace wickfield_bundle
