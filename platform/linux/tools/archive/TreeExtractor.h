// Unpacking an archive into a folder.
#pragma once

#include <string>

#include "platform/linux/tools/archive/ExtractionPlan.h"

namespace platform::linux_host {

// Unpacks the ZIP archive as the contents of the destination folder, which is made, with those above it, where it is
// missing. All or nothing: everything is unpacked under a hidden name first, and a new destination takes its name in
// one step. Where the destination is there, the new items replace those of the same name in it once all are unpacked;
// folders are merged, and a folder that stands where the archive has something else is a failure.
//
// Permissions and times are the archive's; set-id and sticky bits are dropped, and the owner is the caller. Links are
// made last, and may lead anywhere; nothing is ever written through a link. Long runs of zeros become holes.
//
// Throws ToolFailure, also for all that planExtraction refuses, or Interrupted; then nothing of the archive stays.
void extractArchive(const std::string& archive, const std::string& destination, const ExtractionLimits& limits = {});

}  // namespace platform::linux_host
