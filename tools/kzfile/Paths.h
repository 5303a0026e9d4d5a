// From the names that a user gives to the absolute paths that the library takes.
#pragma once

#include <string>

namespace kzfile {

// The working folder; throws std::filesystem::filesystem_error when it is gone.
std::string workingFolder();

// Nothing but made absolute, without trailing slashes.
std::string absolutePath(const std::string& name);

// As a user would name it: relative to the working folder when it lies there.
std::string shownPath(const std::string& path);

// With the links and dots of the folders above it resolved, as far as they are there: the item itself, which may be a
// link, is named by one path whatever was typed.
std::string resolvedPath(const std::string& name);

// What a link leads to. What cannot be looked at counts as missing.
enum class ItemKind { missing, file, folder, danglingLink, other };
ItemKind kindOf(const std::string& path);

// Why an item is missing, for the user: "NAME: No such file or directory".
std::string missingText(const std::string& name);

}  // namespace kzfile
