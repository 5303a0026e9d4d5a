#include <array>
#include <optional>
#include <string>

#include "platform/ports/Host.h"
#include "tools/commandline/Interruption.h"
#include "tools/commandline/Streams.h"
#include "tools/wickfield-bundle/BundlePath.h"
#include "tools/wickfield-bundle/Commands.h"
#include "tools/wickfield-bundle/check/Check.h"
#include "tools/wickfield-bundle/check/Report.h"

namespace wickfield_bundle {

namespace {

using commandline::Arguments;

constexpr std::array<commandline::Option, 4> options{{
    {'j', "json", nullptr, "as JSON, for programs"},
    {'r', "report", "FILE", "write the JSON into that file, whatever is printed"},
    {'s', "strict", nullptr, "warnings count as errors"},
    {0, "rules", nullptr, "list the rules instead of checking anything"},
}};

int listRules(const Arguments& arguments) {
    if (!arguments.operands().empty()) {
        throw commandline::UsageError("--rules lists the rules and checks nothing: " + arguments.operands().front());
    }
    if (arguments.has("report")) {
        throw commandline::UsageError("--rules checks nothing that a --report could be about");
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

std::optional<std::string> reportFile(const Arguments& arguments) {
    auto file = arguments.value("report");
    if (file && file->empty()) {
        throw commandline::UsageError("the option --report needs a path");
    }
    return file;
}

bool writeReport(const std::string& file, const std::string& json) {
    const commandline::TidyWork leavingNothingHalfWritten;
    const platform::Failure failure = platform::host().files->writeAtomically(file, json);
    if (failure) {
        commandline::printError(file + ": the report cannot be written: " + failure->description);
    }
    return !failure;
}

void printFindings(const Arguments& arguments, const Findings& findings, int code) {
    const std::string& name = arguments.operands().front();
    if (arguments.has("json")) {
        commandline::print(jsonReport(name, findings));
    } else if (code == commandline::wrongUsage) {
        commandline::printError(name + ": " + findings.front().reason + ' ' + findings.front().remedy);
    } else {
        commandline::print(textReport(name, findings, commandline::outputTerminalWidth()));
    }
}

int run(const Arguments& arguments) {
    if (arguments.has("rules")) {
        return listRules(arguments);
    }
    if (arguments.operands().empty()) {
        throw commandline::UsageError("no bundle is named");
    }
    const auto file = reportFile(arguments);
    const std::string& name = arguments.operands().front();
    const Findings findings = checkBundle(bundlePathFor(name));
    const int code = codeFor(findings, arguments.has("strict"));
    printFindings(arguments, findings, code);
    const bool isReported = !file || writeReport(*file, jsonReport(name, findings));
    if (commandline::isInterrupted()) {
        return commandline::interruptionCode();
    }
    return isReported || code != commandline::done ? code : commandline::failed;
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
        "the bundle is run or changed. The exit status is 1 when there is an error or the report\n"
        "cannot be written, and 2 when there is no bundle.\n",
    .options = options,
    .fewest = 0,
    .most = 1,
    .run = run,
};

}  // namespace wickfield_bundle
