// A program that does its work by commands, as "program COMMAND [OPTION]... NAME..." : one command per source.
#pragma once

#include <cstddef>
#include <limits>
#include <span>

#include "tools/commandline/Arguments.h"

namespace commandline {

enum ExitCode : int { done = 0, failed = 1, wrongUsage = 2 };  // and 128 + the number of the signal that interrupted it

struct Command {
    static constexpr std::size_t anyNumber = std::numeric_limits<std::size_t>::max();

    const char* name;
    const char* summary;    // one line of the list of commands
    const char* arguments;  // as the help shows them
    const char* help;       // paragraphs
    std::span<const Option> options;
    std::size_t fewest;  // operands
    std::size_t most;

    // An exit code, after a line about each failure. Throws UsageError.
    int (*run)(const Arguments& arguments);
};

struct Program {
    const char* name;
    const char* version;
    std::span<const Command* const> commands;
    const char* notes;  // at the end of the general help: options in any order, exit codes
};

}  // namespace commandline
