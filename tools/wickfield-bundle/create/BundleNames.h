// What a bundle and its parts are called.
#pragma once

#include <string>
#include <string_view>

#include "tools/wickfield-bundle/project/Project.h"

namespace wickfield_bundle {

// "<name> Installer", of which the bundle is "….app" and its archive "….zip". Throws SenselessProject for a name that
// no folder can have.
std::string installerName(const Project& project);

// The project's, or one made of author and name. Throws SenselessProject for one that is no identifier, and where none
// can be made.
std::string bundleIdentifier(const Project& project);

// The version as the system's own tools compare it, at most three numbers; "1" when it begins with none.
std::string numericVersion(std::string_view version);

// Whether a text fits on one line of a window: UTF-8 without control characters.
bool isOneLine(std::string_view text);

// A file name that any host accepts; what is wrong with it otherwise, to follow the name in a sentence.
std::string objectionToFileName(std::string_view name);

}  // namespace wickfield_bundle
