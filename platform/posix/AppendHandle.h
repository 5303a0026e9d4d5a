#pragma once

#include <memory>
#include <string>

#include "platform/ports/FileManager.h"

namespace platform::posix {

// As FileManager::openForAppending. Every piece goes to the end as it is at that moment, behind what others appended. A
// pipe gives none without waiting for its other end.
std::unique_ptr<FileManager::AppendHandle> openAppendHandle(const std::string& path);

}  // namespace platform::posix
