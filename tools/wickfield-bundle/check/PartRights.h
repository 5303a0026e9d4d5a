// The rights to what an installer reads of its own bundle.
#pragma once

#include <string>

#include "tools/wickfield-bundle/check/Check.h"

namespace wickfield_bundle {

// Of a file or folder that may be missing; a link has no rights of its own. `without` is a clause about what a customer
// gets who may not read it.
void checkPartRights(const CheckedBundle& bundle, const std::string& place, const std::string& without,
                     Findings& findings);

}  // namespace wickfield_bundle
