// The digests by the names that users give them.
#pragma once

#include <string>

#include "lib/KZFileManager/Copying.h"
#include "platform/ports/Digests.h"

namespace kzfile {

struct Algorithm {
    const char* name;
    platform::DigestKind kind;
    KZFileManager::FileCopyVerification verification;
};

// Upper and lower case, "-" in front of the number: "SHA-256" is one. Throws UsageError for no such name.
const Algorithm& algorithmNamed(const std::string& name);

}  // namespace kzfile
