#include <langinfo.h>

#include <array>
#include <clocale>
#include <filesystem>
#include <optional>

#include "lib/base/PathText.h"
#include "tools/commandline/Streams.h"
#include "tools/wickfield-bundle/BundlePath.h"
#include "tools/wickfield-bundle/Commands.h"
#include "tools/wickfield-bundle/show/Customer.h"
#include "tools/wickfield-bundle/show/PlanReport.h"
#include "tools/wickfield-bundle/show/Planner.h"

namespace wickfield_bundle {

namespace {

using commandline::Arguments;
using commandline::UsageError;

constexpr std::array<commandline::Option, 5> options{{
    {0, "home", "FOLDER", "for a user whose home folder this is, instead of one's own"},
    {0, "user", "NAME", "with that user's rights and home folder; for the superuser"},
    {'f', "format", "text|tree|json", "as a table, the default, as a tree or for programs"},
    {'j', "json", nullptr, "the same as --format json"},
    {'s', "strict", nullptr, "fail unless all of it would be installed"},
}};

std::string absolutePath(const std::string& name) {
    return kz::appendPathComponent(std::filesystem::absolute(name).lexically_normal().string(), "");
}

bool isUnicodeTerminal() {
    const locale_t locale = ::newlocale(LC_CTYPE_MASK, "", nullptr);
    if (locale == nullptr) {
        return false;
    }
    const std::string charset = ::nl_langinfo_l(CODESET, locale);
    ::freelocale(locale);
    return charset == "UTF-8";
}

void printPlan(const Plan& plan, const std::string& format) {
    const std::size_t columns = commandline::outputTerminalWidth();
    if (format == "json") {
        printJson(plan, commandline::print);
    } else if (format == "tree") {
        printTree(plan, isUnicodeTerminal() ? Drawing::unicode : Drawing::ascii, columns, commandline::print);
    } else {
        printTable(plan, columns, commandline::print);
    }
}

std::string formatFrom(const Arguments& arguments) {
    std::string format = arguments.has("json") ? "json" : arguments.value("format").value_or("text");
    if (format != "text" && format != "tree" && format != "json") {
        throw UsageError("there is no format " + format + ", only text, tree and json");
    }
    return format;
}

bool wouldSucceed(const Plan& plan) {
    const auto canRun = [](const std::optional<PlannedScript>& script) { return !script || script->canRun; };
    const PlanTotals totals = totalsOf(plan);
    return totals.refused == 0 && totals.unknown == 0 && canRun(plan.before) && canRun(plan.after);
}

int run(const Arguments& arguments) {
    const std::string format = formatFrom(arguments);
    const std::string& name = arguments.operands().front();
    const std::string bundle = bundlePathFor(name);
    const auto home = arguments.value("home");
    if (home && home->empty()) {
        throw UsageError("the home folder has no name");
    }
    const auto homePath = home ? std::optional(absolutePath(*home)) : std::nullopt;
    if (const auto user = arguments.value("user")) {
        if (const auto whyNot = becomeUser(*user)) {
            throw UsageError(*whyNot);
        }
    }
    std::optional<Customer> customer;
    std::optional<platform::ScopedHost> scope;
    if (homePath) {
        scope.emplace(customer.emplace(*homePath).host());
    }
    try {
        const Plan plan = planInstallation(bundle);
        printPlan(plan, format);
        return arguments.has("strict") && !wouldSucceed(plan) ? commandline::failed : commandline::done;
    } catch (const NoInstaller& reason) {
        commandline::printError(name + ": " + reason.what());
        return commandline::wrongUsage;
    }
}

}  // namespace

const commandline::Command showCommand{
    .name = "show",
    .summary = "show what an installation would do",
    .arguments = "BUNDLE",
    .help =
        "Names every item that an installer's bundle would put on this computer's disk: where\n"
        "it would lie, and whether it would be new, take the place of what stands there (which\n"
        "goes to the Trash), be refused, or need an administrator; and the scripts, and what is\n"
        "passed over. Nothing on the disk is changed and no script is run, so what a script\n"
        "would change first is not known. The items are sorted by name; an installation takes\n"
        "them in the order in which the file system lists them. The exit status is 2 when there\n"
        "is no installer, and with --strict 1 when an item would be refused, cannot be told, or\n"
        "a script cannot run.\n",
    .options = options,
    .fewest = 1,
    .most = 1,
    .run = run,
};

}  // namespace wickfield_bundle
