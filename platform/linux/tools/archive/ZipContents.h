// The bytes of one entry of a ZIP archive.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "platform/linux/tools/archive/ZipDirectory.h"

namespace platform::linux_host {

// Hands the entry's bytes on piece by piece, in buffers that last for the call. Never more bytes than the archive's
// table of contents promises, and never fewer than it promises without a failure. Throws ToolFailure where the entry's
// own header differs from the table of contents, where the data cannot be unpacked, or where the checksum is wrong; by
// then the sink has seen bytes that are not worth keeping. Also throws what the sink throws, and Interrupted.
void readZipContents(int file, const ZipEntry& entry, const std::function<void(std::string_view)>& sink);

// The same for a short one, as a text. Throws for one of more than `limit` bytes.
std::string readShortZipContents(int file, const ZipEntry& entry, std::size_t limit);

// Whether the entry is packed in a way that is understood here: not at all, or deflated.
bool isKnownZipMethod(const ZipEntry& entry);

}  // namespace platform::linux_host
