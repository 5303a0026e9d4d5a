// The picture in the installer's window.
#pragma once

#include <string>

#include "tools/wickfield-bundle/check/Finding.h"
#include "tools/wickfield-bundle/check/MediaCheck.h"

namespace wickfield_bundle {

void checkBackground(const std::string& path, const std::string& place, const MediaReport& report, Findings& findings);

}  // namespace wickfield_bundle
