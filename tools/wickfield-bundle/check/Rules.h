// The rules by name: what each is about, how bad it is, and what to do.
//
// A rule stands in one of the two tables and nowhere else; a finding is made by its name. The names of all are listed
// by "wickfield-bundle check --rules".
#pragma once

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "tools/wickfield-bundle/check/ContentRuleTable.h"
#include "tools/wickfield-bundle/check/Finding.h"
#include "tools/wickfield-bundle/check/RuleTable.h"

namespace wickfield_bundle {

// A rule's name, which is looked up when the program is compiled: one that is in neither table does not compile.
class RuleName {
public:
    template <std::size_t size>
    consteval RuleName(const char (&name)[size])  // NOLINT(google-explicit-constructor)
        : m_rule(&lookUp(std::string_view(name, size - 1))) {}

    const Rule& rule() const { return *m_rule; }

private:
    static consteval const Rule& lookUp(std::string_view name) {
        for (const Rule& rule : ruleTable) {
            if (rule.name == name) {
                return rule;
            }
        }
        for (const Rule& rule : contentRuleTable) {
            if (rule.name == name) {
                return rule;
            }
        }
        throw "no rule has this name";  // NOLINT(hicpp-exception-baseclass): never thrown, it stops the compiler
    }

    const Rule* m_rule;
};

// Adds what a rule found. The remedy is the rule's own unless there is a better one for this place.
inline void add(Findings& findings, RuleName name, std::string place, std::string reason, std::string remedy = {}) {
    const Rule& rule = name.rule();
    findings.push_back({.severity = rule.severity,
                        .rule = std::string(rule.name),
                        .place = std::move(place),
                        .reason = std::move(reason),
                        .remedy = remedy.empty() ? std::string(rule.remedy) : std::move(remedy)});
}

std::vector<Rule> allRules();  // of both tables, by name

}  // namespace wickfield_bundle
