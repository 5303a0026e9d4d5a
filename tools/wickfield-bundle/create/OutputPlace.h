// Whether a bundle may be written where it is wanted.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/wickfield-bundle/create/StagedBundle.h"

namespace wickfield_bundle {

struct OutputPlace {
    std::string folder;
    std::string bundle;  // path
    std::optional<std::string> archive;
};

// Makes the folder where it is missing. Throws CreateFailure when something stands there that may not be replaced, when
// the folder lies in one of the sources, or a source in the bundle that would be replaced.
void prepareOutput(const OutputPlace& place, Replace replace, const std::vector<std::string>& sources);

}  // namespace wickfield_bundle
