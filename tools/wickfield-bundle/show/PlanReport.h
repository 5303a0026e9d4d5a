// A plan, for people and for programs.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "tools/wickfield-bundle/show/Plan.h"

namespace wickfield_bundle {

using Printer = std::function<void(std::string_view)>;

// A table of the items, each with its place in the tree where the destination does not tell it; reasons stand below
// their items. Lines of text end at `columns`, or anywhere when that is 0. What could act on a terminal is escaped.
void printTable(const Plan& plan, std::size_t columns, const Printer& print);

// The destinations as a tree, drawn with the characters of Unicode or of ASCII; folders with nothing but one folder in
// them are joined with it. Likewise escaped.
enum class Drawing { ascii, unicode };
void printTree(const Plan& plan, Drawing drawing, std::size_t columns, const Printer& print);

// An object of these members, all of which are always there:
//
//   format       1
//   bundle       path of the bundle
//   name, version, author  as the installer's window shows them
//   home         path of the home folder, or null when nobody is there to install for
//   preinstall, postinstall  null, or an object: "source", "interpreter", "canRun" (whether this host has it)
//   items        array of objects:
//     source        path from the bundle's own folder
//     destination   path, or null when nobody is there whose folder could be meant
//     kind          "file", "package", "link" or "special" (a pipe, socket or device)
//     state         "new", "replaced", "refused" or "unknown"
//     administrator whether an administrator is asked for
//     reason        one sentence without a full stop, or ""
//     files, bytes  numbers
//   folders      array of objects with "path": the folders that are made because they are missing
//   passedOver   likewise, what is left out, from the bundle's own folder
//   totals       object of numbers: items, new, replaced, refused, unknown, administrator, files, bytes
//
// In ASCII. What is not UTF-8 in a path becomes U+FFFD; beside it then stands a member of the same name with "Bytes" at
// its end, the bytes as hexadecimal digits. Items, folders and passedOver are in the order of their paths.
void printJson(const Plan& plan, const Printer& print);

}  // namespace wickfield_bundle
