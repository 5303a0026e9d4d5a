// Whole files, and files to append to.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/ports/FileManager.h"

namespace platform::macos {

// As FileManager::readFile. Pipes, sockets, devices and folders give none.
std::optional<std::string> readWholeFile(const std::string& path, std::uint64_t limit);

// As FileManager::openForAppending. Every piece goes to the end as it is at that moment, behind what others appended.
std::unique_ptr<FileManager::AppendHandle> openAppendHandle(const std::string& path);

}  // namespace platform::macos
