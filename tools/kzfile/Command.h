// What kzfile can do: one command per source.
#pragma once

#include <cstddef>
#include <limits>
#include <span>

#include "tools/kzfile/Arguments.h"

namespace kzfile {

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

extern const Command hashCommand;
extern const Command copyCommand;
extern const Command trashCommand;
extern const Command expandCommand;
extern const Command uniqueCommand;
extern const Command compressCommand;
extern const Command decompressCommand;
extern const Command metadataCommand;
extern const Command sizeCommand;
extern const Command waitCommand;

}  // namespace kzfile
