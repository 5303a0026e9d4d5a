// The commands, and what --help says about them.
#pragma once

#include <string>
#include <vector>

#include "tools/kzfile/Command.h"

namespace kzfile {

const Command* findCommand(const std::string& name);  // null: there is none of that name

// Those of the command and the one that all have.
std::vector<Option> optionsOf(const Command& command);

std::string generalHelp();
std::string helpFor(const Command& command);

}  // namespace kzfile
