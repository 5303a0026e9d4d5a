// Paths as text, by the platform's rules; nothing here touches the disk.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kz {

// Joins with exactly one "/" between the two and collapses runs of slashes; an absolute right side is joined like any
// other. An empty left side gives the right side.
std::string appendPathComponent(std::string_view path, std::string_view component);

std::string lastPathComponent(std::string_view path);          // "/" for "/"; trailing slashes do not count
std::string deletingLastPathComponent(std::string_view path);  // "/" for "/x"; "" for "x"
std::string pathExtension(std::string_view path);              // without the "."; "" when there is none
std::string deletingPathExtension(std::string_view path);
std::string appendPathExtension(std::string_view path, std::string_view extension);
std::vector<std::string> pathComponents(std::string_view path);  // an absolute path begins with "/"

}  // namespace kz
