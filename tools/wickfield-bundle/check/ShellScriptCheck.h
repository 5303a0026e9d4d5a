// A script that /bin/bash is to run.
#pragma once

#include <functional>
#include <string>

#include "tools/wickfield-bundle/check/RegularFile.h"
#include "tools/wickfield-bundle/check/Rules.h"

namespace wickfield_bundle {

// Looks at the text and has bash parse it, which takes up to ten seconds. Never runs it.
void checkShellScript(const std::string& path, const RegularFile& file,
                      const std::function<void(RuleName, std::string reason)>& report);

}  // namespace wickfield_bundle
