#include "tools/kzfile/Archiver.h"

#include "lib/base/PathText.h"
#include "platform/ports/Host.h"
#include "tools/commandline/Interruption.h"
#include "tools/commandline/Streams.h"
#include "tools/kzfile/Command.h"
#include "tools/kzfile/Paths.h"
#include "tools/kzfile/ReportingHost.h"
#include "tools/kzfile/Trashing.h"

namespace kzfile {

namespace {

constexpr const char* archiver = "/usr/bin/ditto";

// What keeps the operation from being begun, in words; "" when it may, and what was to be replaced is in the Trash.
std::string prepare(const std::string& sourceName, const std::string& resultName, bool mayReplace) {
    const ItemKind source = kindOf(absolutePath(sourceName));
    if (source == ItemKind::missing || source == ItemKind::danglingLink) {
        return missingText(sourceName);
    }
    const std::string result = absolutePath(resultName);
    const std::string folder = kz::deletingLastPathComponent(result);
    if (kindOf(folder) != ItemKind::folder) {
        return shownPath(folder) + ": there is no such folder";
    }
    const std::string tool = platform::host().processes->locateTool(archiver);
    if (!platform::host().files->isExecutable(tool)) {
        return tool + ": the archiver is not there; was kzfile moved away from the rest of its installation?";
    }
    if (kindOf(result) == ItemKind::missing) {
        return "";
    }
    if (!mayReplace) {
        return resultName + ": is there already (--replace moves it to the Trash first)";
    }
    if ((resolvedPath(sourceName) + '/').starts_with(resolvedPath(resultName) + '/')) {
        return resultName + ": is what the result is made of, and stays";
    }
    return trashItem(resultName);
}

}  // namespace

int makeArchiveOrFolder(const Arguments& arguments, const Archiving& operation) {
    const std::string& source = arguments.operands().front();
    const std::string& result = arguments.operands().back();
    if (const std::string words = prepare(source, result, arguments.has("replace")); !words.empty()) {
        commandline::printError(words);
        return failed;
    }
    const commandline::TidyWork tidy([] {
        if (const auto tool = reports().tool()) {
            tool->terminate();
        }
    });
    const bool isThere = operation(absolutePath(source), absolutePath(result));
    const auto tool = reports().tool();
    if (isThere && tool && tool->terminationStatus() == 0) {
        return done;
    }
    if (commandline::isInterrupted()) {
        return commandline::interruptionCode();
    }
    commandline::printError(result + ": was not made");
    return failed;
}

}  // namespace kzfile
