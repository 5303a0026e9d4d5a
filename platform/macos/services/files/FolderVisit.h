#pragma once

#include <functional>
#include <string>

#include "platform/ports/FileManager.h"

namespace platform::macos {

// As FileManager::visitDirectory.
bool visitFolder(const std::string& path, VisitSizes sizes, const std::function<void(const VisitedEntry&)>& visit);

// Of an item by its mode.
FileType typeOfMode(unsigned mode);

}  // namespace platform::macos
