// Folders that people see and move as one item.
#pragma once

#include <string>
#include <string_view>

namespace platform::linux_host {

// Whether a name ends with an extension of a known kind of bundle, in whatever case.
bool hasPackageExtension(std::string_view name);

// A folder, or a link to one, whose extension is that of a known kind of bundle or whose Finder information has the
// bundle bit.
bool isPackage(const std::string& path);

}  // namespace platform::linux_host
