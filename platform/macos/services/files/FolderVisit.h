#pragma once

#include <functional>
#include <string>

#include "platform/ports/FileManager.h"

namespace platform::macos {

// As FileManager::visitDirectory.
bool visitFolder(const std::string& path, VisitSizes sizes, const std::function<void(const VisitedEntry&)>& visit);

}  // namespace platform::macos
