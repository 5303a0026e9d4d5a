// The bundle that a command line names.
#pragma once

#include <string>

namespace wickfield_bundle {

// Absolute and without links, which is how an installer that is started there knows its bundle; as far as it can be
// followed. Of a name that cannot be followed at all, as in a working folder that is gone, the name itself.
std::string bundlePathFor(const std::string& name);

}  // namespace wickfield_bundle
