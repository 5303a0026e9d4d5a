#include <signal.h>

#include <string>
#include <vector>

#include "platform/linux/tools/archive/Interruption.h"
#include "tools/commandline/Interruption.h"
#include "tools/commandline/Streams.h"
#include "tools/wickfield-bundle/Commands.h"
#include "tools/wickfield-bundle/create/BundlePlan.h"
#include "tools/wickfield-bundle/create/BundleWriter.h"
#include "tools/wickfield-bundle/create/CreateFailure.h"
#include "tools/wickfield-bundle/create/FileTimes.h"
#include "tools/wickfield-bundle/create/Template.h"
#include "tools/wickfield-bundle/project/ProjectFile.h"
#include "tools/wickfield-bundle/project/ProjectOptions.h"

namespace wickfield_bundle {

namespace {

using commandline::Arguments;
using commandline::Option;

std::span<const Option> createOptions() {
    static const std::vector<Option> all = [] {
        std::vector<Option> options(projectOptions().begin(), projectOptions().end());
        options.push_back({'o', "output", "FOLDER", "where the bundle goes; else the working folder"});
        options.push_back({'f', "force", nullptr, "replace a bundle, and an archive, of that name"});
        options.push_back({'z', "archive", nullptr, "write “NAME Installer.zip” beside the bundle too"});
        options.push_back({0, "template", "BUNDLE", "the installer to fill; may be repeated, once per host"});
        options.push_back({0, "host", "linux|macos", "what it is to run on, else all that there are templates for"});
        return options;
    }();
    return all;
}

void warn(const std::string& words) { commandline::printError("warning: " + words); }

WrittenBundle create(const Arguments& arguments) {
    const Project project = projectByOptions(arguments);
    WriteWishes wishes{.outputFolder = arguments.value("output").value_or("."),
                       .replace = arguments.has("force") ? Replace::yes : Replace::no,
                       .archives = arguments.has("archive"),
                       .latestTime = FileTimes::latestByEnvironment(),
                       .warn = warn};
    if (wishes.outputFolder.empty()) {
        throw commandline::UsageError("the option --output needs a folder");
    }
    const auto templates = chooseTemplates({.paths = arguments.values("template"), .hosts = arguments.values("host")});
    return writeBundle(planBundle(project, templates, warn), wishes);
}

int run(const Arguments& arguments) {
    const commandline::TidyWork tidy([] { platform::linux_host::noteInterruption(SIGINT); });
    try {
        const WrittenBundle written = create(arguments);
        commandline::print(commandline::nameForOutput(written.bundle) + '\n');
        if (written.archive) {
            commandline::print(commandline::nameForOutput(*written.archive) + '\n');
        }
        return commandline::done;
    } catch (const ProjectProblems& problems) {
        for (const std::string& line : problems.lines()) {
            commandline::printError(line);
        }
        return commandline::wrongUsage;
    } catch (const SenselessProject& problem) {
        commandline::printError(problem.what());
        return commandline::wrongUsage;
    } catch (const CreateFailure& failure) {
        if (commandline::isInterrupted()) {
            return commandline::interruptionCode();
        }
        commandline::printError(failure.what());
        return commandline::failed;
    }
}

}  // namespace

const commandline::Command createCommand{
    .name = "create",
    .summary = "make an installer's bundle of a project",
    .arguments = "",
    .help =
        "Makes “NAME Installer.app”. What it installs is named by --item, by --tree or in a\n"
        "project file. /Users/user in a destination stands for the home folder of whoever\n"
        "installs; a destination that ends in / is a folder to put the item into. A source that\n"
        "is a link stands for what it leads to; links in it stay links. The same sources give the\n"
        "same bundle, byte for byte: its times are those of the sources, and none is later than\n"
        "SOURCE_DATE_EPOCH where the environment has that. Nothing stands under the bundle's name\n"
        "until all of it is written.\n",
    .options = createOptions(),
    .fewest = 0,
    .most = 0,
    .run = run,
};

}  // namespace wickfield_bundle
