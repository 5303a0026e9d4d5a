#include "tools/commandline/Main.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <new>
#include <string>
#include <vector>

#include "lib/KZLog.h"
#include "platform/posix/ProcessStart.h"
#include "tools/commandline/Help.h"
#include "tools/commandline/Interruption.h"
#include "tools/commandline/Streams.h"

namespace commandline {

namespace {

void checkOperands(const Command& command, const Arguments& arguments) {
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

int runCommand(const Program& program, const Command& command, const std::vector<std::string>& words) {
    try {
        const Arguments arguments(words, optionsOf(command));
        if (arguments.has("help")) {
            print(helpFor(program, command));
            return done;
        }
        checkOperands(command, arguments);
        return command.run(arguments);
    } catch (const UsageError& error) {
        const std::string name = command.name;
        printError(name + ": " + error.what() + " (" + program.name + ' ' + name + " --help tells what there is)");
        return wrongUsage;
    }
}

int run(const Program& program, const std::vector<std::string>& words) {
    const std::string first = words.empty() ? "" : words.front();
    if (first == "--help" || first == "-h" || (first == "help" && words.size() == 1)) {
        print(generalHelp(program));
        return done;
    }
    if (first == "--version") {
        print(std::string(program.name) + ' ' + program.version + '\n');
        return done;
    }
    if (const Command* const command = findCommand(program, first)) {
        return runCommand(program, *command, {words.begin() + 1, words.end()});
    }
    printError((words.empty()            ? "no command is given"
                : first.starts_with('-') ? "unknown option " + first
                                         : "unknown command " + first) +
               " (" + program.name + " --help tells what there is)");
    return wrongUsage;
}

int runSafely(const Program& program, const std::vector<std::string>& words) {
    try {
        return run(program, words);
    } catch (const std::bad_alloc&) {
        printError("there is not enough memory");
    } catch (const std::exception& error) {
        printError(error.what());
    }
    return failed;
}

}  // namespace

void prepare(const Program& program) {
    noteStreams(program.name);
    platform::posix::prepareProcess();
    watchForInterruptions();
}

void runAndExit(const Program& program, int count, char** words) {
    int code = runSafely(program, {words + (count > 0 ? 1 : 0), words + count});
    if (!finishOutput() && code == done) {
        code = failed;
    }
    KZLog::willTerminate();
    std::fflush(stderr);
    std::_Exit(code);
}

}  // namespace commandline
