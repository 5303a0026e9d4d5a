// Everything that goes into a bundle, settled before anything is written.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/ports/PropertyValue.h"
#include "tools/wickfield-bundle/create/Template.h"
#include "tools/wickfield-bundle/project/Project.h"

namespace wickfield_bundle {

struct PlannedCopy {
    std::string source;
    std::string place;  // in the bundle
};

struct BundlePlan {
    std::string name;                 // "<plug-in> Installer"
    std::vector<PlannedCopy> copies;  // what lies in another comes after it

    platform::PropertyDictionary information;
    platform::PropertyDictionary settings;

    std::string bundleName() const { return name + ".app"; }
    std::string archiveName() const { return name + ".zip"; }
};

// Looks at the sources' names and kinds, down to the last file. Throws SenselessProject and CreateFailure, whose texts
// name what is wrong and what to do; `warn` hears of what is odd.
BundlePlan planBundle(const Project& project, const std::vector<Template>& templates,
                      const std::function<void(const std::string&)>& warn);

}  // namespace wickfield_bundle
