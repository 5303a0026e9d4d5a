// The commands, and what --help says about them.
#pragma once

#include <string>
#include <vector>

#include "tools/commandline/Command.h"

namespace commandline {

const Command* findCommand(const Program& program, const std::string& name);  // null: there is none of that name

// Those of the command and the one that all have.
std::vector<Option> optionsOf(const Command& command);

std::string generalHelp(const Program& program);
std::string helpFor(const Program& program, const Command& command);

}  // namespace commandline
