// Paths by pattern, and names that are safe or free.
//
// A component of a pattern that holds a "*" is a wildcard: "*" stands for any run of characters, none included, "?" for
// one character, and a "\" takes the character after it for itself; everything else stands for itself, upper and lower
// case told apart. A character is one code point of UTF-8 text; a byte that is no UTF-8 counts as one. A wildcard never
// spans a "/". Components without a "*" are names as they stand, whatever else they hold.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

enum class SearchSubdirs { no, yes };

namespace KZFileManager {

// The items that the pattern names, in the order in which the host lists them, hidden ones included; none of them twice
// unless the pattern leads there twice. A pattern without any "*" gives the path that it is, whether or not something
// stands there. Without a base path the pattern counts from "/"; an absolute pattern is read relative to the base path
// all the same. The switch is accepted and ignored: matching never goes deeper than the pattern.
std::vector<std::string> filesMatchingWildcardPath(const std::string& pattern);
std::vector<std::string> filesMatchingWildcardPath(const std::string& pattern,
                                                   const std::optional<std::string>& fromBasePath);
std::vector<std::string> filesMatchingWildcardPath(const std::string& pattern,
                                                   const std::optional<std::string>& fromBasePath,
                                                   SearchSubdirs searchSubdirs);

// The first match; without one, the base path joined with the pattern as it stands.
std::string decodeWildcardPath(const std::string& pattern, const std::string& fromBasePath);

// Whether the name as a whole matches one component of a pattern.
bool isLike(std::string_view name, std::string_view pattern);

// The name without one "." at its start, white space at its ends and any "/" or ":"; "" for ".". The dot goes first, so
// a dot behind leading blanks stays. What is left may still be "", "." (of "..") or ".." (of "..."), which name no
// file, and is of any length: check before using it in a path.
std::string validateFilename(const std::string& name);

// The path itself when nothing exists there, else the first free one of "Name 2.ext", "Name 3.ext" and so on beside it.
// Only a look at the disk: somebody else may take the name before the caller does. A dangling link counts as free.
std::string uniqueFilename(const std::string& path);

}  // namespace KZFileManager
