// Paths as text, by the platform's rules; nothing here touches the disk.
//
// An extension is what follows the last "." of the last component. A component has none that begins with its only "."
// (".hidden") or with "..", or ends with "." ("a."), and neither is a text an extension that holds a blank or one of
// the invisible marks that turn the direction of writing.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kz {

// Joins with exactly one "/" between the two, collapses runs of slashes and drops trailing ones; an absolute right side
// is joined like any other. An empty side gives the other.
std::string appendPathComponent(std::string_view path, std::string_view component);

std::string lastPathComponent(std::string_view path);          // "/" for "/"; trailing slashes do not count
std::string deletingLastPathComponent(std::string_view path);  // "/" for "/x"; "" for "x"
std::string pathExtension(std::string_view path);              // without the "."; "" when there is none

// Both drop trailing slashes and collapse runs. The path as it is when there is no name to work on ("" or "/") or the
// new extension is none.
std::string deletingPathExtension(std::string_view path);
std::string appendPathExtension(std::string_view path, std::string_view extension);

// An absolute path begins with a component "/". So ends a path with a trailing slash ("/a/" is "/", "a", "/"), which
// changes nothing for whoever joins the components again but counts when they are counted.
std::vector<std::string> pathComponents(std::string_view path);

}  // namespace kz
