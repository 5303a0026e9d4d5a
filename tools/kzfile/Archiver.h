// What compress and decompress have in common: a result that must not be there yet, and a tool that makes it.
#pragma once

#include <functional>
#include <string>

#include "tools/kzfile/Command.h"

namespace kzfile {

// The option --replace, which both have.
constexpr Option replaceOption{'r', "replace", nullptr, "move what stands at the result's place to the Trash first"};

// Runs the library's operation from the source to the result. An exit code, after a line about a failure; nothing
// half-made stays.
using Archiving = std::function<bool(const std::string& source, const std::string& result)>;
int makeArchiveOrFolder(const Arguments& arguments, const Archiving& operation);

}  // namespace kzfile
