// kzfile: file operations of the library for the command line.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "lib/KZLog.h"
#include "platform/posix/ProcessStart.h"
#include "tools/kzfile/Command.h"
#include "tools/kzfile/Help.h"
#include "tools/kzfile/Interruption.h"
#include "tools/kzfile/ReportingHost.h"
#include "tools/kzfile/Streams.h"

namespace {

using kzfile::UsageError;

void checkOperands(const kzfile::Command& command, const kzfile::Arguments& arguments) {
    const auto& operands = arguments.operands();
    if (operands.size() < command.fewest) {
        throw UsageError(operands.empty() ? "nothing to work on" : "there are too few names");
    }
    if (operands.size() > command.most) {
        throw UsageError("there is a name too many: " + operands[command.most]);
    }
    for (const std::string& operand : operands) {
        if (operand.empty()) {
            throw UsageError("a name is empty");
        }
    }
}

int runCommand(const kzfile::Command& command, std::vector<std::string> words) {
    try {
        const kzfile::Arguments arguments(words, kzfile::optionsOf(command));
        if (arguments.has("help")) {
            kzfile::print(kzfile::helpFor(command));
            return kzfile::done;
        }
        checkOperands(command, arguments);
        return command.run(arguments);
    } catch (const UsageError& error) {
        const std::string name = command.name;
        kzfile::printError(name + ": " + error.what() + " (kzfile " + name + " --help tells what there is)");
        return kzfile::wrongUsage;
    }
}

int run(const std::vector<std::string>& words) {
    const std::string first = words.empty() ? "" : words.front();
    if (first == "--help" || first == "-h" || (first == "help" && words.size() == 1)) {
        kzfile::print(kzfile::generalHelp());
        return kzfile::done;
    }
    if (first == "--version") {
        kzfile::print("kzfile " KZFILE_VERSION "\n");
        return kzfile::done;
    }
    if (const kzfile::Command* const command = kzfile::findCommand(first)) {
        return runCommand(*command, {words.begin() + 1, words.end()});
    }
    kzfile::printError((words.empty()            ? "no command is given"
                        : first.starts_with('-') ? "unknown option " + first
                                                 : "unknown command " + first) +
                       " (kzfile --help tells what there is)");
    return kzfile::wrongUsage;
}

int runSafely(const std::vector<std::string>& words) {
    try {
        return run(words);
    } catch (const std::bad_alloc&) {
        kzfile::printError("there is not enough memory");
    } catch (const std::exception& error) {
        kzfile::printError(error.what());
    }
    return kzfile::failed;
}

}  // namespace

int main(int count, char** arguments) {
    kzfile::noteStreams();
    platform::posix::prepareProcess();
    kzfile::watchForInterruptions();
    kzfile::setReportingHost();
    int code = runSafely({arguments + (count > 0 ? 1 : 0), arguments + count});
    if (!kzfile::finishOutput() && code == kzfile::done) {
        code = kzfile::failed;
    }
    KZLog::willTerminate();
    std::fflush(stderr);
    std::_Exit(code);  // other threads may still be at work; nothing that they use is destroyed under them
}
