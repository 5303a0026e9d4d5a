// Storing a tree in an archive.
#pragma once

#include <functional>
#include <string>

#include "platform/linux/tools/archive/ZipWriter.h"

namespace platform::linux_host {

enum class KeepParent { no, yes };

// Writes a ZIP archive of the source: a folder's contents or, with its parent kept, the folder itself; a single file
// under its name. Links inside are stored as links; a source that is a link is followed. Names, permissions, times in
// whole seconds and empty folders are kept; owners, extended attributes and hard links are not. The archive itself
// and the one that it replaces stay out when they lie in the source, as do sockets, pipes and devices, and items that
// vanish meanwhile: `tell` is called with a line about each of these.
//
// The archive is written under a hidden name beside its place and takes its name at the end, replacing a file of that
// name, but not its own source. Throws ToolFailure or Interrupted, also for an item that cannot be read; then nothing
// is left behind.
void archiveTree(const std::string& source, const std::string& archive, KeepParent keepParent,
                 const std::function<void(const std::string&)>& tell, ClockTimes clock = ClockTimes::local);

}  // namespace platform::linux_host
