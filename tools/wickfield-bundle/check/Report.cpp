#include "tools/wickfield-bundle/check/Report.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <span>
#include <string_view>
#include <vector>

#include "lib/base/Text.h"
#include "platform/linux/services/ConsoleText.h"
#include "tools/commandline/Streams.h"
#include "tools/wickfield-bundle/NameBytes.h"
#include "tools/wickfield-bundle/check/ReportText.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

namespace {

constexpr std::size_t mostShown = 10;  // of one rule

std::string_view nameOf(Severity severity) {
    return severity == Severity::error ? "error" : severity == Severity::warning ? "warning" : "note";
}

std::string tinted(Severity severity) {
    const std::string name(nameOf(severity));
    switch (severity) {
        case Severity::error:
            return commandline::tintedForOutput(name, commandline::Tint::red);
        case Severity::warning:
            return commandline::tintedForOutput(name, commandline::Tint::yellow);
        case Severity::note:
            break;
    }
    return commandline::boldForOutput(name);
}

std::string counted(std::size_t number, const std::string& noun) {
    return std::to_string(number) + ' ' + noun + (number == 1 ? "" : "s");
}

// The findings of one rule, in the order in which they came.
std::vector<std::vector<const Finding*>> byRule(const Findings& findings) {
    std::vector<std::vector<const Finding*>> groups;
    for (const Finding& finding : findings) {
        const auto group = std::ranges::find_if(groups, [&](const auto& present) {
            return present.front()->rule == finding.rule && present.front()->severity == finding.severity;
        });
        if (group == groups.end()) {
            groups.push_back({&finding});
        } else {
            group->push_back(&finding);
        }
    }
    std::ranges::stable_sort(groups, std::ranges::greater{}, [](const auto& group) { return group.front()->severity; });
    return groups;
}

bool isWithinCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U; }

// A path that is longer than anyone reads loses its middle.
std::string shortened(const std::string& place) {
    constexpr std::size_t longest = 400;
    constexpr std::size_t start = 200;
    constexpr std::size_t end = 150;
    if (place.size() <= longest) {
        return place;
    }
    std::size_t from = start;
    std::size_t to = place.size() - end;
    while (from > start / 2 && isWithinCharacter(place[from])) {
        --from;
    }
    while (to < place.size() && isWithinCharacter(place[to])) {
        ++to;
    }
    return place.substr(0, from) + "[...]" + place.substr(to);
}

class TextReport {
public:
    TextReport(const std::string& bundle, std::size_t columns) : m_bundle(bundle), m_columns(columns) {}

    void append(std::span<const Finding* const> group) {
        m_text += tinted(group.front()->severity) + ' ' + group.front()->rule + '\n';
        const auto shown = group.first(std::min(group.size(), mostShown));
        for (auto finding = shown.begin(); finding != shown.end(); ++finding) {
            const auto next = std::next(finding);
            const bool isLast = next == shown.end();
            m_text += "  " + platform::linux_host::consoleLine(shortened(placeOf(**finding))) + '\n';
            if (isLast || (*next)->reason != (*finding)->reason) {
                add((*finding)->reason, 4);
            }
            if (const std::string& remedy = (*finding)->remedy;
                !remedy.empty() && (isLast || (*next)->remedy != remedy)) {
                add("> " + remedy, 4);
            }
        }
        if (group.size() > shown.size()) {
            add("and " + std::to_string(group.size() - shown.size()) + " more, which --json lists", 2);
        }
        m_text += '\n';
    }

    std::string finish(const Findings& findings) {
        const Totals totals = totalsOf(findings);
        add(m_bundle + ": " + counted(totals.errors, "error") + ", " + counted(totals.warnings, "warning") + ", " +
                counted(totals.notes, "note"),
            0);
        return std::move(m_text);
    }

private:
    const std::string& placeOf(const Finding& finding) const {
        return finding.place.empty() ? m_bundle : finding.place;
    }

    void add(const std::string& text, std::size_t indent) {
        m_text += paragraph(platform::linux_host::consoleLine(text), indent, m_columns);
    }

    const std::string& m_bundle;
    std::size_t m_columns;
    std::string m_text;
};

// Of any bytes.
std::string inQuotes(std::string_view text) {
    return nlohmann::json(text).dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
}

std::string member(std::string_view name, std::string_view value) { return inQuotes(name) + ": " + inQuotes(value); }

}  // namespace

Totals totalsOf(const Findings& findings) {
    Totals totals;
    for (const Finding& finding : findings) {
        ++(finding.severity == Severity::error     ? totals.errors
           : finding.severity == Severity::warning ? totals.warnings
                                                   : totals.notes);
    }
    return totals;
}

std::string textReport(const std::string& bundle, const Findings& findings, std::size_t columns) {
    TextReport report(bundle, columns);
    for (const auto& group : byRule(findings)) {
        report.append(group);
    }
    return report.finish(findings);
}

std::string jsonReport(const std::string& bundle, const Findings& findings) {
    const Totals totals = totalsOf(findings);
    std::string text = "{\n  \"format\": 1,\n  " + member("bundle", bundle) +
                       ",\n  \"errors\": " + std::to_string(totals.errors) +
                       ",\n  \"warnings\": " + std::to_string(totals.warnings) +
                       ",\n  \"notes\": " + std::to_string(totals.notes) + ",\n  \"findings\": [";
    const char* separator = "\n    {";
    for (const Finding& finding : findings) {
        text.append(separator)
            .append(member("severity", nameOf(finding.severity)) + ", " + member("rule", finding.rule) + ",\n     ")
            .append(member("place", finding.place) + ",\n     ")
            .append(kz::isUTF8(finding.place) ? "" : member("placeBytes", hexadecimal(finding.place)) + ",\n     ")
            .append(member("reason", finding.reason) + ",\n     ")
            .append(member("remedy", finding.remedy) + "}");
        separator = ",\n    {";
    }
    return text + (findings.empty() ? "]\n}\n" : "\n  ]\n}\n");
}

std::string textOfRules(std::size_t columns) {
    std::string text;
    for (const Rule& rule : allRules()) {
        text += tinted(rule.severity) + ' ' + std::string(rule.name) + '\n' + paragraph(rule.meaning, 4, columns);
        if (!rule.remedy.empty()) {
            text += paragraph("> " + std::string(rule.remedy), 4, columns);
        }
    }
    return text;
}

std::string jsonOfRules() {
    std::string text = "[";
    const char* separator = "\n  {";
    for (const Rule& rule : allRules()) {
        text.append(separator)
            .append(member("rule", rule.name) + ", " + member("severity", nameOf(rule.severity)) + ",\n   ")
            .append(member("meaning", rule.meaning) + ",\n   " + member("remedy", rule.remedy) + "}");
        separator = ",\n  {";
    }
    return text + "\n]\n";
}

}  // namespace wickfield_bundle
