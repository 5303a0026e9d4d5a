#include <array>
#include <filesystem>

#include "lib/base/PathText.h"
#include "tools/commandline/Streams.h"
#include "tools/wickfield-bundle/Commands.h"
#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/Report.h"

namespace wickfield_bundle {

namespace {

using commandline::Arguments;

constexpr std::array<commandline::Option, 3> options{{
    {'j', "json", nullptr, "as JSON, for programs"},
    {'s', "strict", nullptr, "warnings count as errors"},
    {0, "rules", nullptr, "list the rules instead of checking anything"},
}};

int listRules(const Arguments& arguments) {
    if (!arguments.operands().empty()) {
        throw commandline::UsageError("--rules lists the rules and checks nothing: " + arguments.operands().front());
    }
    commandline::print(arguments.has("json") ? jsonOfRules() : textOfRules(commandline::outputTerminalWidth()));
    return commandline::done;
}

int codeFor(const Findings& findings, bool strict) {
    if (!findings.empty() && findings.front().rule == "not-a-bundle") {
        return commandline::wrongUsage;
    }
    const Totals totals = totalsOf(findings);
    return totals.errors > 0 || (strict && totals.warnings > 0) ? commandline::failed : commandline::done;
}

int run(const Arguments& arguments) {
    if (arguments.has("rules")) {
        return listRules(arguments);
    }
    if (arguments.operands().empty()) {
        throw commandline::UsageError("no bundle is named");
    }
    const std::string& name = arguments.operands().front();
    const std::string path = kz::appendPathComponent(std::filesystem::absolute(name).lexically_normal().string(), "");
    const Findings findings = checkBundle(path);
    const int code = codeFor(findings, arguments.has("strict"));
    if (arguments.has("json")) {
        commandline::print(jsonReport(name, findings));
    } else if (code == commandline::wrongUsage) {
        commandline::printError(name + ": " + findings.front().reason + ' ' + findings.front().remedy);
    } else {
        commandline::print(textReport(name, findings, commandline::outputTerminalWidth()));
    }
    return code;
}

}  // namespace

const commandline::Command checkCommand{
    .name = "check",
    .summary = "look for mistakes in an installer's bundle",
    .arguments = "BUNDLE",
    .help =
        "Looks at all that lies in a bundle and names what would fail, surprise a customer or\n"
        "work on some hosts only, each with its place, the reason and what to do about it. An\n"
        "error is what makes an installation fail or put something wrong on a disk. Nothing in\n"
        "the bundle is run or changed. The exit status is 1 when there is an error, and 2 when\n"
        "there is no bundle.\n",
    .options = options,
    .fewest = 0,
    .most = 1,
    .run = run,
};

}  // namespace wickfield_bundle
