// Makes the plan of an installation.
#pragma once

#include <stdexcept>
#include <string>

#include "tools/wickfield-bundle/show/Plan.h"

namespace wickfield_bundle {

// Why there is nothing to plan: what lies at the path is no installer.
class NoInstaller : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Blocks; changes nothing. For the user and the folders of the present host, and by what stands on its disk now.
// `bundle` is absolute. Throws NoInstaller, and std::runtime_error for a tree that has no end.
Plan planInstallation(const std::string& bundle);

}  // namespace wickfield_bundle
