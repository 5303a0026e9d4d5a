// Message digests by CommonCrypto.
#pragma once

#include "platform/ports/Digests.h"

namespace platform::macos {

// MD5 and SHA-1 are there to compare files by.
class CommonDigests : public Digests {
public:
    std::unique_ptr<Digest> start(DigestKind kind) override;
};

}  // namespace platform::macos
