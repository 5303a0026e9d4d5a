#include "tools/wickfield-bundle/show/PlanText.h"

#include "lib/KZFileManager.h"
#include "platform/linux/services/ConsoleText.h"
#include "tools/commandline/Streams.h"
#include "tools/wickfield-bundle/check/ReportText.h"

namespace wickfield_bundle {

namespace {

using platform::linux_host::consoleLine;

std::string scriptText(const char* when, const std::optional<PlannedScript>& script, std::size_t columns) {
    if (!script) {
        return std::string(when) + " no script is run.\n";
    }
    const std::string missing = script->canRun ? "" : " (which is not on this host: the installation fails)";
    return paragraph(when + (" " + consoleLine(script->source)) + " is run by " + script->interpreter + missing + ".",
                     0, columns);
}

void append(std::string& text, std::uint64_t number, const std::string& what) {
    if (number > 0) {
        text += (text.empty() ? "" : ", ") + std::to_string(number) + ' ' + what;
    }
}

std::string sums(const Plan& plan) {
    const PlanTotals totals = totalsOf(plan);
    std::string states;
    append(states, totals.added, "new");
    append(states, totals.replaced, "replaced");
    append(states, totals.refused, "refused");
    append(states, totals.unknown, "unknown");
    append(states, totals.needAdministrator, "by an administrator");
    return counted(plan.items.size(), "item") + " of " + counted(totals.files, "file") + " and " +
           sizeText(totals.bytes) + (states.empty() ? "" : ": ") + states + ".";
}

}  // namespace

std::string_view nameOf(ItemState state) {
    switch (state) {
        case ItemState::added:
            return "new";
        case ItemState::replaced:
            return "replaced";
        case ItemState::refused:
            return "refused";
        case ItemState::unknown:
            break;
    }
    return "unknown";
}

std::string_view nameOf(ItemKind kind) {
    switch (kind) {
        case ItemKind::file:
            return "file";
        case ItemKind::package:
            return "package";
        case ItemKind::link:
            return "link";
        case ItemKind::special:
            break;
    }
    return "special";
}

std::string counted(std::uint64_t number, const std::string& noun) {
    return std::to_string(number) + ' ' + noun + (number == 1 ? "" : "s");
}

std::string sizeText(std::uint64_t bytes) { return KZFileManager::formatFileSize(static_cast<double>(bytes)); }

std::string tintedName(ItemState state) {
    const auto name = nameOf(state);
    switch (state) {
        case ItemState::refused:
            return commandline::tintedForOutput(name, commandline::Tint::red);
        case ItemState::unknown:
            return commandline::tintedForOutput(name, commandline::Tint::yellow);
        case ItemState::added:
        case ItemState::replaced:
            break;
    }
    return std::string(name);
}

std::string noteOn(const PlannedItem& item) {
    const std::string reason = consoleLine(item.reason);
    if (!item.needsAdministrator) {
        return reason;
    }
    return "asks for an administrator" + (reason.empty() ? "" : ": " + reason);
}

std::string headText(const Plan& plan, std::size_t columns) {
    const std::string home = plan.home ? "for the home folder " + *plan.home
                                       : "with nobody there to install for; a home folder can be named by --home";
    return commandline::boldForOutput(consoleLine(plan.name + " " + plan.version + " " + plan.author)) + ",\n" +
           paragraph(consoleLine(home) + ".", 0, columns) + scriptText("First", plan.before, columns) + '\n';
}

std::string footText(const Plan& plan, std::size_t columns) {
    std::string text = (plan.items.empty() ? "Nothing is installed.\n" : "") + std::string("\n") +
                       scriptText("Then", plan.after, columns);
    if (!plan.passedOver.empty()) {
        text += "\nPassed over, since their names begin with \".\":\n";
        for (const std::string& path : plan.passedOver) {
            text += "  " + consoleLine(path) + '\n';
        }
    }
    text += '\n' + paragraph(sums(plan), 0, columns);
    if (totalsOf(plan).refused > 0) {
        text += paragraph(
            "The installation ends with the first item that is refused, in the order in which the customer's file "
            "system lists them; what was put in place before stays.",
            0, columns);
    }
    return text;
}

}  // namespace wickfield_bundle
