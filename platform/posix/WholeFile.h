// Whole files, read and replaced in one piece.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/ports/Error.h"

namespace platform::posix {

// As FileManager::readFile. Pipes, sockets, devices and folders give none.
std::optional<std::string> readWholeFile(const std::string& path, std::uint64_t limit);

// As FileManager::writeAtomically: a staged sibling is written and renamed over the file. The mode of a file that is
// replaced is kept, its owner too for the superuser; a new one has mode 0666 less the umask. A link to a file stays,
// and the file that it leads to is replaced; a dangling link is replaced itself. Not flushed to the disk.
Failure replaceFile(const std::string& path, std::string_view contents);

}  // namespace platform::posix
