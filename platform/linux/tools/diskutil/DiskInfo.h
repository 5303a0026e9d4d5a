// What is known of a mounted file system and the disk that it lies on.
#pragma once

#include <string>

#include "platform/ports/PropertyValue.h"

namespace platform::linux_host {

// Of the file system that is mounted at the path, which must be a mount point. Sizes are in bytes. Only what this
// system tells is there: a file system without a block device has no DeviceNode, a disk without a label no VolumeName,
// and so on. Throws std::runtime_error with a line for people.
PropertyDictionary diskInfo(const std::string& mountPoint);

}  // namespace platform::linux_host
