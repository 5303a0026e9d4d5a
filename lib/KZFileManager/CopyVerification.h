#pragma once

#include <string>
#include <vector>

#include "lib/KZFileManager/CopyDestinations.h"
#include "platform/ports/Digests.h"

namespace KZFileManager {

// The digests of what the destinations hold, in their order, in hexadecimal digits. They are read at the same time, by
// as many threads as the machine runs; blocks until all are done. One that cannot be read is logged and has "".
std::vector<std::string> digestsOfDestinations(std::vector<CopyDestination>& destinations, platform::DigestKind kind);

}  // namespace KZFileManager
