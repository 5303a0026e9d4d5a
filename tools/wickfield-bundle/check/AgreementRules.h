// The agreement that a customer is asked to agree to.
#pragma once

#include <string>

#include "tools/wickfield-bundle/check/Finding.h"
#include "tools/wickfield-bundle/check/MediaCheck.h"

namespace wickfield_bundle {

void checkAgreement(const std::string& path, const std::string& place, const MediaReport& report, Findings& findings);

}  // namespace wickfield_bundle
