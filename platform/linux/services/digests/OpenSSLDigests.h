// Message digests by OpenSSL.
#pragma once

#include "platform/ports/Digests.h"

namespace platform::linux_host {

// MD5 and SHA-1 are there to compare files by and work also where a policy forbids them for signatures.
class OpenSSLDigests : public Digests {
public:
    std::unique_ptr<Digest> start(DigestKind kind) override;
};

}  // namespace platform::linux_host
